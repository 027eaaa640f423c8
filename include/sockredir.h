/**
 * @file sockredir.h
 * Handing a connection over to a child program as its standard input and output.
 */
#ifndef ZORVCRT_SOCKREDIR_H
#define ZORVCRT_SOCKREDIR_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Start a program with its standard input, and if wanted its standard output, redirected.
 *
 * @param unused1      ignored
 * @param unused2      ignored
 * @param path         the program; "PATH" is not searched. Null is a program that cannot be started.
 * @param argc         number of arguments in @p argv; looked at only for @p name
 * @param argv         the arguments for the program, ended by a null entry; null counts as no arguments
 * @param name         name that SetProcessName() writes over @p argv in the child before the start, so that
 *                     the program gets its arguments as that leaves them, or null. The argument texts must
 *                     then be writable.
 * @param close_handle descriptor to close in the child, or 0 for none: the listening socket, say
 * @param in           descriptor that becomes the standard input
 * @param out          descriptor that becomes the standard output, or 0 to inherit the caller's
 * @param process      receives the child's id, or -1 (0xFFFFFFFF) when no child could be created; may be null
 * @return 0, or the errno of a failed fork()
 *
 * In the child the given descriptors are closed once they are in place. To use one connection both ways hand
 * in a duplicate of it as @p out: a descriptor that equals @p in is gone by then, and the program starts
 * without a standard output. Likewise a descriptor that is already the standard handle it is to become is
 * closed, not kept, and one that is not open or that the system refuses to put in place leaves the program
 * without that handle. The caller's own descriptors stay open.
 *
 * A program that cannot be started shows as exit status 255 of the child, which leaves through exit(). What
 * exec.h says about descriptors, signals and threads holds here too. Re-entrant.
 */
ZFX_API int32_t ZfxRedirToChildProcess(int32_t unused1, int32_t unused2, const char *path, int32_t argc,
                                       char *const argv[], const char *name, int32_t close_handle, int32_t in,
                                       int32_t out, uint32_t *process);

ZFX_END_DECLS

#endif
