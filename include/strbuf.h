/**
 * @file strbuf.h
 * A growable, zero-terminated text.
 *
 * The record may be read freely; it is changed through the functions only, and every handle comes from
 * strbuf_create(). A text argument may lie inside the buffer's own text. Lengths count bytes without the
 * terminator; a negative length stands for all of a zero-terminated text, and null counts as "". A null text
 * with a positive length adds that many bytes without setting them: they show what the block held there,
 * zeros when it is new.
 *
 * Growth. Replacing the text by n bytes, when the capacity is not above n, sets the capacity to
 * (n / step + 1) * step and provides one byte more than that. Appending n bytes, when no more than n bytes of
 * the capacity are free, sets it to ((length + n + 1) / step + 1) * step and provides just that. The bytes
 * behind the text are zero after growing, up to the provided size rounded up to a multiple of 4.
 *
 * A text that cannot be had (no memory, or a capacity beyond INT32_MAX) leaves the buffer as it was.
 *
 * Re-entrant; one buffer must not be used by two threads at a time.
 */
#ifndef ZORVCRT_STRBUF_H
#define ZORVCRT_STRBUF_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** The longest text that one strbuf_format() or strbuf_append_format() produces, in bytes. */
#define STRBUF_FORMAT_MAX 16383

/** The buffer, to be read and not to be written. */
typedef struct strbuf {
  char *data;           /**< the text; null only when no memory could be had for it */
  int32_t capacity;     /**< what the growth rules work on, a whole multiple of step */
  int32_t length;       /**< bytes of the text */
  char *end;            /**< where the next append writes: data + length, but see strbuf_trim() */
  int32_t step;         /**< growth step */
  char *scratch;        /**< the area lent by strbuf_getBufferSetLength(), or null */
  int32_t scratch_size; /**< its size in bytes, 0 without one */
} strbuf;

/**
 * Create a buffer.
 *
 * @param step growth step in bytes; below 1 it counts as 1
 * @param text what the buffer holds at first; null counts as empty
 * @return the buffer, to be given back with strbuf_destroy(); null when the record cannot be allocated. When
 *         only the text cannot be allocated the buffer holds none (strbuf_get() gives null) and tries again
 *         with the next text.
 */
ZFX_API strbuf *strbuf_create(int32_t step, const char *text);

/** Release a buffer with its text and the scratch area that may be pending; null is ignored. */
ZFX_API void strbuf_destroy(strbuf *buffer);

/**
 * Replace the text.
 *
 * @param buffer the buffer; null does nothing
 * @param text   the new text; null as described above
 * @param n      its length in bytes, negative for all of it
 * @return the buffer's text (borrowed); null for a null buffer or when the text cannot be had
 */
ZFX_API char *strbuf_set_str(strbuf *buffer, const char *text, int32_t n);

/** Empty a buffer and keep its block; null is ignored. */
ZFX_API void strbuf_clear(strbuf *buffer);

/** Make one buffer hold the text of another; the same one twice changes nothing, a null @p destination does
 * nothing and a null @p source counts as empty. */
ZFX_API void strbuf_copy(strbuf *destination, const strbuf *source);

/**
 * Append to the text.
 *
 * @param buffer the buffer; null does nothing. An empty one is set as by strbuf_set_str().
 * @param text   what to append; null as described above
 * @param n      its length in bytes, negative for all of it
 * @return where in the buffer the appended text begins (borrowed); null for a null buffer or when the room
 *         cannot be had
 */
ZFX_API char *strbuf_append(strbuf *buffer, const char *text, int32_t n);

/**
 * Make room ahead of appending.
 *
 * @param buffer the buffer
 * @param n      bytes that will be appended; 0 or less asks for none
 * @return 0 when there is room, grown or not; -1 for a null buffer or when the room cannot be had
 */
ZFX_API int32_t strbuf_reserve(strbuf *buffer, int32_t n);

/**
 * Insert into the text.
 *
 * @param buffer   the buffer; null does nothing
 * @param text     what to insert; null as described above
 * @param n        its length in bytes, negative for all of it
 * @param position offset in bytes in front of which to insert; a negative one counts as 0
 *
 * Callers insert inside the text. At or past its end the text is appended first and then inserted as well, so
 * it is there twice: "xy" inserted at 3 into "abc" gives "abcxyxy". When memory is short the text stays
 * as it is.
 */
ZFX_API void strbuf_insert(strbuf *buffer, const char *text, int32_t n, int32_t position);

/** Tell the length of the text in bytes; 0 for null. */
ZFX_API uint32_t strbuf_length(const strbuf *buffer);

/** Give the text, zero-terminated and borrowed until the next change; null for a null buffer. */
ZFX_API char *strbuf_get(const strbuf *buffer);

/** Tell the byte at an offset; 0 when @p index is negative or not inside the text, or for a null buffer. */
ZFX_API uint8_t strbuf_getat(const strbuf *buffer, int32_t index);

/**
 * Take the text out of a buffer, which is empty and usable afterwards.
 *
 * @param buffer the buffer; null gives null. A scratch area that is pending is not released but left to the
 *               caller as well, who holds its address and gives it back with ZfxMemFree().
 * @return the text, which the caller now owns and releases with ZfxMemFree()
 */
ZFX_API char *strbuf_detach(strbuf *buffer);

/**
 * Replace the text by a formatted one of at most STRBUF_FORMAT_MAX bytes; what is longer is cut.
 *
 * @param buffer the buffer; null formats nothing and gives -1. It is emptied before the arguments are read,
 *               so its own text as an argument is empty.
 * @param format a printf format; null counts as empty
 * @return the bytes that the whole text has or would have had; -1 when the C library refuses a value, and the
 *         buffer is then empty
 */
ZFX_API int32_t strbuf_format(strbuf *buffer, const char *format, ...) ZFX_PRINTF(2, 3);

/** Append a formatted text of at most STRBUF_FORMAT_MAX bytes; otherwise as strbuf_format(), but that nothing
 * is emptied: a refused value leaves the text as it was. */
ZFX_API int32_t strbuf_append_format(strbuf *buffer, const char *format, ...) ZFX_PRINTF(2, 3);

/**
 * Lend a zero-filled scratch area that holds a copy of the text, to be written directly and taken over with
 * strbuf_releaseBuffer().
 *
 * @param buffer the buffer; null gives null. An area that is pending is released first.
 * @param n      size of the area in bytes; below 1 the growth step. The copy is cut to one byte less.
 * @return the area, owned by the buffer; null when it cannot be allocated
 */
ZFX_API char *strbuf_getBufferSetLength(strbuf *buffer, int32_t n);

/**
 * End the loan of the scratch area; without one nothing happens.
 *
 * @param buffer the buffer; null does nothing
 * @param keep   not 0 makes the content of the area the text
 * @param n      bytes to take over, at most the size of the area; negative for all up to the first zero byte
 */
ZFX_API void strbuf_releaseBuffer(strbuf *buffer, int32_t keep, int32_t n);

/** Compare the text with another without regard to case; null on either side counts as empty.
 * @return below, equal to or above 0 as strcasecmp() orders them */
ZFX_API int32_t strbuf_compareNoCase(const strbuf *buffer, const char *text);

/**
 * Tell whether the text ends in another one.
 *
 * @param buffer the buffer; null gives 0
 * @param text   the ending; null counts as empty and gives 0 for a positive @p n
 * @param n      its length in bytes, negative for all of it
 * @param nocase not 0 disregards case, as strncasecmp() does
 * @return 1 or 0
 */
ZFX_API int32_t strbuf_endswith(const strbuf *buffer, const char *text, int32_t n, int32_t nocase);

/** Drop the first @p n bytes of the text; below 1 none, at its length or above all of them.
 * @return the new length; 0 for null */
ZFX_API uint32_t strbuf_ltrunc(strbuf *buffer, int32_t n);

/**
 * Remove white space (isspace()) from both ends of the text; null is ignored.
 *
 * Meant as the last step before the text is read: the end pointer keeps marking the end before trimming, so
 * that what is appended without growing comes behind as many zero bytes as were trimmed away.
 */
ZFX_API void strbuf_trim(strbuf *buffer);

ZFX_END_DECLS

#endif
