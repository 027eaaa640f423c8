/**
 * @file GetTempDir.h
 * The directory for temporary files, and names for files in it.
 */
#ifndef ZORVCRT_GETTEMPDIR_H
#define ZORVCRT_GETTEMPDIR_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Write the directory for temporary files, "/tmp/".
 *
 * @param buffer receives the text; must hold 6 bytes. Null gives -1.
 * @param size   not looked at
 * @return 5, the length of the text; -1 for a null @p buffer
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetTempDir(char *buffer, int32_t size);

/**
 * Make up a name in "/tmp/" that no file has at this moment.
 *
 * @param buffer receives the name, always terminated; null gives -1
 * @param size   capacity of @p buffer in bytes; 17 hold every name, a longer name is cut. Below 1 nothing is
 *               written and the result is -1.
 * @param prefix what the name begins with behind "/tmp/"; its first 5 bytes count. Null and "" count as
 * "file".
 * @return 0 on success; -1 for a missing buffer; otherwise an errno value, and then nothing is written:
 * ENOENT when there is no "/tmp", EEXIST when no free name was found, or what made a name unverifiable
 *
 * The name is the prefix and 6 random letters and digits. The file is not created, so another process can
 * take the name at any time; use it only where that does no harm. The environment is not consulted.
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetTempFileName(char *buffer, int32_t size, const char *prefix);

/**
 * Open a temporary file that exists already.
 *
 * @param prefix as for ZfxGetTempFileName()
 * @return -1 with errno set, unless somebody creates a file of the made-up name during the call; then its
 *         descriptor, open for reading and writing, which the caller closes. Programs that are started
 *         inherit it.
 *
 * The file is opened and never created: a promise that callers rely on. To create a temporary file use
 * mkstemp(). Re-entrant.
 */
ZFX_API int32_t ZfxGetTempFile(const char *prefix);

ZFX_END_DECLS

#endif
