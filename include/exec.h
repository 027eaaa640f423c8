/**
 * @file exec.h
 * Starting child programs from a command line.
 *
 * The command line is cut into words like this, and no shell takes part in it:
 * - Blanks and tabs in front of a word are passed over.
 * - A word that begins with " or ' runs to the next occurrence of the same quote. There is no escape
 *   character, and what follows the closing quote begins a new word.
 * - Any other word runs to the next blank. A tab or a quote inside such a word is part of it.
 * - At most 128 words are taken; the rest of the line is ignored.
 * - A quote that is never closed ends the child by SIGSEGV before any program is started. Callers tell a
 *   malformed command line from a program that fails by that signal in the wait status.
 *
 * The first word is the program, looked for along "PATH" when it holds no slash. A program that cannot be
 * started, an empty line included, shows as exit status 1 of the child, which leaves through exit(): what the
 * caller has buffered in standard streams and not flushed comes out a second time in that case.
 *
 * The child has the descriptors of the caller that are not marked close-on-exec, its environment, signal mask
 * and ignored signals. Threads of the caller do no harm: between fork and start the child calls nothing that
 * another thread could have left locked.
 *
 * All functions are re-entrant. A child that is not waited for is the caller's to collect, with
 * ZfxWaitProcess() or waitpid().
 */
#ifndef ZORVCRT_EXEC_H
#define ZORVCRT_EXEC_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Start a program.
 *
 * @param command the command line, left as it is; null counts as empty
 * @param wait    0 to return at once, anything else to wait for the child's end
 * @param process receives the child's id, after the wait when there is one, or -1 (0xFFFFFFFF) when no child
 *                could be created; may be null
 * @param unused  ignored
 * @param in      descriptor that becomes the child's standard input, or -1 to inherit the caller's
 * @param out     descriptor that becomes the child's standard output, or -1
 * @param err     descriptor that becomes the child's standard error, or -1
 * @return without @p wait 0; with it the raw status of waitpid(), which is the exit code times 256 for a
 *         normal end, or -1 when the system does not give one (the caller ignores SIGCHLD, or has collected
 *         the child elsewhere). When no child could be created, errno (EAGAIN, ENOMEM).
 *
 * The redirections are made in the order in, out, err, each seeing what those before it did. The given
 * descriptors stay open in the caller and in the child. A descriptor that is not open, or that the system
 * refuses to put in place, leaves the child without that standard handle, and the program starts all the
 * same; one that is the standard handle itself stays where it is.
 *
 * A wait that a signal interrupts goes on.
 */
ZFX_API int32_t ZfxExecImpl(const char *command, int32_t wait, uint32_t *process, uint32_t unused, int32_t in,
                            int32_t out, int32_t err);

/** Start a program that inherits the standard handles; otherwise as ZfxExecImpl(). */
ZFX_API int32_t ZfxExec(const char *command, int32_t wait);

/** Start a program that inherits the standard handles and report its id; otherwise as ZfxExecImpl(). */
ZFX_API int32_t ZfxExecP(const char *command, int32_t wait, uint32_t *process);

/** Start a program with its standard handles redirected and report its id; as ZfxExecImpl(). */
ZFX_API int32_t ZfxExecPR(const char *command, int32_t wait, int32_t in, int32_t out, int32_t err,
                          uint32_t *process);

/** Start a program as ZfxExecP() does.
 * @param command as for ZfxExecImpl()
 * @param wait    as for ZfxExecImpl()
 * @param value   kept in its place and ignored
 * @param process as for ZfxExecImpl()
 * @return as ZfxExecImpl() */
ZFX_API int32_t ZfxExecWP(const char *command, int32_t wait, uint32_t value, uint32_t *process);

ZFX_END_DECLS

#endif
