/**
 * @file CopyDirTree.h
 * Reproduction of a directory structure, without the files in it.
 */
#ifndef ZORVCRT_COPYDIRTREE_H
#define ZORVCRT_COPYDIRTREE_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Make the destination directory, and one beside it for every matching pair of a source and a directory name.
 *
 * @param destination the directory to make when it does not exist; null gives -1
 * @param source      what must exist for the destination to be made; null gives -1
 * @return 0 as soon as the destination exists, whatever became of the rest; -1 for a missing argument;
 *         otherwise the errno value with which the source could not be queried or the destination not be made
 *
 * Callers rely on the walk as it is, so know it before you use it:
 *  - The names are those of the directories in the process's current directory, not in the source. Links to
 *    directories count, "." and ".." do not.
 *  - A name is joined with a backslash. For a name N the function calls itself with "destination\N" and
 *    "source\N", so with "src\N" beside "src" it makes "dst\N" beside "dst", and then looks for "src\N\M"
 * with every name M of the current directory.
 *  - The first name whose call fails, mostly because there is no "source\N", ends the walk that it is part
 * of. In which order names come is up to the file system.
 *
 * New directories have the mode 0776 less the umask. A walk ends at the latest where a file name cannot grow
 * any more (127 names deep, 4095 bytes of path), and at most 16,384 directories are made or visited below
 * each name of the first level. Each level holds one descriptor open. Re-entrant; the current directory is
 * that of the process and must stay the same during the call.
 */
ZFX_API int32_t CopyDirTree(const char *destination, const char *source);

ZFX_END_DECLS

#endif
