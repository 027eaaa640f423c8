/**
 * @file tls.h
 * Thread-local storage: keys under which every thread keeps a value of its own.
 *
 * A key is a plain number, the system's own, that the caller keeps. All functions may be called from any
 * thread; whoever deletes a key sees to it that no thread uses it any more.
 */
#ifndef ZORVCRT_TLS_H
#define ZORVCRT_TLS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** What becomes of a thread's value when the thread ends; never called for a null value. */
typedef void (*ZfxTLSDestructor)(void *value);

/**
 * Create a key. Its value is null in every thread, running or yet to come.
 *
 * @param key        receives the key; null creates none. Left alone on failure.
 * @param destructor called at the end of each thread, by that thread, with its value when that is not null;
 *                   null stands for ZfxGlobalTLSDestructor()
 * @return 0, or an error number: EINVAL for a null @p key, EAGAIN when the process has as many keys as the
 *         system allows (1024), ENOMEM
 *
 * With the default destructor every value must be a block of ZfxMemAlloc() or malloc(), or null.
 */
ZFX_API int32_t ZfxCreateTLS(uint32_t *key, ZfxTLSDestructor destructor);

/** The default destructor: releases the value with ZfxMemFree(). @param value a heap block; null is ignored
 */
ZFX_API void ZfxGlobalTLSDestructor(void *value);

/**
 * Give a key back.
 *
 * @param key a key of ZfxCreateTLS()
 * @return 0, or EINVAL when there is no such key
 *
 * The values that threads have stored are not released and their destructor is not called any more: each
 * thread releases its own value first.
 */
ZFX_API int32_t ZfxDeleteTLS(uint32_t key);

/**
 * Store the calling thread's value.
 *
 * @param key   a key of ZfxCreateTLS()
 * @param value the value, or null for none; the value it replaces is not released. From here on the key's
 *              destructor owns it, also where it is given as const.
 * @return 0, or an error number: EINVAL when there is no such key, ENOMEM
 */
ZFX_API int32_t ZfxSetTLSValue(uint32_t key, const void *value);

/**
 * Tell the calling thread's value.
 *
 * @param key a key of ZfxCreateTLS()
 * @return the value that this thread stored last; null when it stored none or there is no such key
 */
ZFX_API void *ZfxGetTLSValue(uint32_t key);

ZFX_END_DECLS

#endif
