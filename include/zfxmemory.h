/**
 * @file zfxmemory.h
 * The heap as the whole library uses it. Every block is a plain block of the process's allocator without a
 * header of its own, so ZfxMemFree() and free() are interchangeable on it. A block that a function of this
 * library hands over belongs to the caller, who releases it with ZfxMemFree() unless its header says
 * otherwise.
 *
 * All functions are re-entrant and keep no state.
 */
#ifndef ZORVCRT_ZFXMEMORY_H
#define ZORVCRT_ZFXMEMORY_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Obtain a zero-filled block.
 *
 * @param size bytes wanted; rounded up to the next multiple of 4
 * @return the block, or null with errno set when the allocator fails. For 0 bytes whatever the allocator
 * gives for an empty request, null or a unique pointer; ZfxMemFree() takes either.
 */
ZFX_API void *ZfxMemAlloc(uint64_t size);

/**
 * Change the size of a block.
 *
 * @param pointer the block, or null for a new one
 * @param size    bytes wanted. For a null @p pointer the call is ZfxMemAlloc(): rounded and zero-filled. For
 * a block the size is taken exactly as given and added bytes are not cleared.
 * @return the block, possibly moved; null when the allocator fails, and then the old block is still valid and
 *         still the caller's. A @p size of 0 on a block does what realloc() does: the block is released.
 */
ZFX_API void *ZfxMemRealloc(void *pointer, uint64_t size);

/** Release a block; null is ignored. @param pointer a block of this library or of malloc() */
ZFX_API void ZfxMemFree(void *pointer);

/**
 * Tell whether a pointer may be read.
 *
 * @param pointer the address in question
 * @param length  bytes in question; accepted and not looked at, since the address space is not probed
 * @return 1 when @p pointer is non-null, else 0
 */
ZFX_API int32_t ZfxMemReadable(const void *pointer, uint64_t length);

/** Tell whether a pointer may be written; the rule is that of ZfxMemReadable(). */
ZFX_API int32_t ZfxMemWriteable(const void *pointer, uint64_t length);

/**
 * Copy bytes, or nothing when either side is null.
 *
 * @param destination where to; null copies nothing. Must hold @p length bytes.
 * @param source      where from; null copies nothing
 * @param length      bytes to copy
 * @return @p destination in every case, so a skipped copy cannot be told from a done one
 */
ZFX_API void *ZfxMemCopy(void *destination, const void *source, uint64_t length);

/**
 * Duplicate a text.
 *
 * @param string the text; null gives null
 * @return a new text that the caller releases with ZfxMemFree(); null for null or when the allocator fails
 */
ZFX_API char *ZfxStrDup(const char *string);

ZFX_END_DECLS

#endif
