/**
 * @file GetComputerName.h
 * The name of the host.
 */
#ifndef ZORVCRT_GETCOMPUTERNAME_H
#define ZORVCRT_GETCOMPUTERNAME_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Tell the name of the host.
 *
 * @param buffer receives the name, cut to fit and terminated; empty when the system does not tell it. Null
 *               receives nothing.
 * @param size   in: capacity of @p buffer in bytes, below 1 nothing is written; out: length of the name in
 *               @p buffer without the terminator. Null counts as a capacity of 0.
 * @return the length of the name in @p buffer
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetComputerName(char *buffer, int32_t *size);

ZFX_END_DECLS

#endif
