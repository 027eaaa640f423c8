/**
 * @file security.h
 * The place of access rights, which this system does not change.
 */
#ifndef ZORVCRT_SECURITY_H
#define ZORVCRT_SECURITY_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Does nothing; kept for callers that add access rights where there are some.
 *
 * @param object ignored, as is everything behind it; may be null
 * @return 0
 */
ZFX_API int32_t ZfxAddAccessRights(const void *object, ...);

ZFX_END_DECLS

#endif
