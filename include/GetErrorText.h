/**
 * @file GetErrorText.h
 * The message of a system error.
 */
#ifndef ZORVCRT_GETERRORTEXT_H
#define ZORVCRT_GETERRORTEXT_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Write the system's message for an error number, in the language of the process locale.
 *
 * @param error  an errno value, or -1 for the calling thread's current errno
 * @param buffer receives the message, cut to fit and terminated; null receives nothing
 * @param size   capacity of @p buffer in bytes; below 1 nothing is written
 * @return the number of bytes written without the terminator
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetErrorText(int32_t error, char *buffer, int32_t size);

ZFX_END_DECLS

#endif
