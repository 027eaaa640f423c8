/**
 * @file crtvers.h
 * The version of the library.
 */
#ifndef ZORVCRT_CRTVERS_H
#define ZORVCRT_CRTVERS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Write the library's version, "8.4-4:1".
 *
 * @param buffer receives the text, always terminated; null does nothing. Must hold at least 1 byte even when
 *               @p size is 0, because the terminator is written in that case too.
 * @param size   capacity of @p buffer in bytes; 8 hold the whole version, fewer a prefix of it
 *
 * Re-entrant.
 */
ZFX_API void ZfxGetCrtVersion(char *buffer, uint64_t size);

ZFX_END_DECLS

#endif
