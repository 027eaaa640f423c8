/**
 * @file GetErrorNumber.h
 * The number of the last system error.
 */
#ifndef ZORVCRT_GETERRORNUMBER_H
#define ZORVCRT_GETERRORNUMBER_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** Tell the calling thread's last system error. @return its errno value */
ZFX_API uint32_t ZfxGetErrorNumber(void);

ZFX_END_DECLS

#endif
