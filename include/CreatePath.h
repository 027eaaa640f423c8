/**
 * @file CreatePath.h
 * Creation of a directory with all the directories above it.
 */
#ifndef ZORVCRT_CREATEPATH_H
#define ZORVCRT_CREATEPATH_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Create every directory of a path that is missing.
 *
 * @param path the directories, separated by '/' or '\\'; from the root when it begins with either, else from
 *             the current directory. Beyond 1023 bytes it is cut. Null gives -1.
 * @return 0 when all of them exist; -1 for null and for a path that names nothing ("", "/"); otherwise the
 *         errno value of the mkdir() that failed, and then the directories above the failed one exist
 *
 * Both separators make the same path: "a\\b/c" creates "a", "a/b" and "a/b/c". New directories have the mode
 * 0776 less the umask. What exists already is accepted whatever its kind, so a path that ends in a file
 * gives 0. Two callers may create the same path at the same time. Re-entrant.
 */
ZFX_API int32_t CreatePath(const char *path);

ZFX_END_DECLS

#endif
