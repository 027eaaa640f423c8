/**
 * @file setpname.h
 * Renaming the running process as process listings show it.
 */
#ifndef ZORVCRT_SETPNAME_H
#define ZORVCRT_SETPNAME_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Write a name over the argument texts of the running program.
 *
 * @param name the new name; null changes nothing. May be one of the arguments.
 * @param argc number of arguments in @p argv
 * @param argv the argument vector that main() received; its texts are written to. Null, or a null first
 *             argument, gives null.
 * @return the first argument, now rewritten
 *
 * A name that is no longer than the first argument replaces that text alone. A longer one takes the whole
 * area that the first argument, the further arguments and then the environment texts form as long as each
 * begins right behind the one before it; what is not such a neighbour, because the host has moved or replaced
 * it, is neither read beyond its end nor written. The area is cleared and receives as much of the name as it
 * holds.
 *
 * So the further arguments are lost and, with a long name, environment variables that still stand where the
 * system put them at the start: copy what is needed before. A name as long as the area, terminator included,
 * or longer is left without a terminator inside it; the first argument is then not to be read as a text.
 *
 * The areas are the process's own: call it while no other thread reads arguments or environment. It calls
 * nothing that is not allowed in a signal handler or after fork().
 */
ZFX_API char *SetProcessName(const char *name, int32_t argc, char *const argv[]);

ZFX_END_DECLS

#endif
