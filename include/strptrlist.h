/**
 * @file strptrlist.h
 * A growable list of owned text copies that can be kept in ascending order.
 *
 * The record may be read freely; it is changed through the functions only. A list that
 * strptrlist_add_sorted() alone has filled is in the order of strcmp(), and strptrlist_find_sorted() searches
 * it.
 *
 * Re-entrant; nothing is locked, so one list must not be changed while another thread uses it.
 */
#ifndef ZORVCRT_STRPTRLIST_H
#define ZORVCRT_STRPTRLIST_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * The list, to be read and not to be written. Lists are made by strptrlist_new() only, which puts more than
 * these fields into their block: a record that a host makes or copies is no list.
 */
typedef struct strptrlist {
  char **items;      /**< the texts, owned by the list, in a block that may begin in front of them; slots
                        beyond count have no meaning */
  uint64_t count;    /**< slots in use */
  uint64_t capacity; /**< slots allocated, 32 at first */
} strptrlist;

/** Create an empty list with 32 slots, to be given back with strptrlist_delete().
 * @return the list; null when memory is short */
ZFX_API strptrlist *strptrlist_new(void);

/**
 * Grow the slots ahead of adding.
 *
 * @param list   the list
 * @param wanted number of slots; a capacity above it is left alone, otherwise @p wanted rounded down to a
 *               multiple of 32, plus 32, are added: 32 wanted of 32 gives 96
 * @return 0 on success; -1 for a null list or when the memory cannot be had, and the list is unchanged
 */
ZFX_API int32_t strptrlist_ensuresize(strptrlist *list, uint64_t wanted);

/**
 * Append a copy of the first bytes of a text.
 *
 * @param list the list
 * @param text holds @p n bytes; null adds @p n zero bytes
 * @param n    number of bytes to copy
 * @return 0 on success; -1 for a null list or when memory is short, and the list keeps its texts
 */
ZFX_API int32_t strptrlist_ladd(strptrlist *list, const char *text, uint64_t n);

/** Append a copy of a zero-terminated text, null counting as ""; otherwise as strptrlist_ladd(). */
ZFX_API int32_t strptrlist_add(strptrlist *list, const char *text);

/** Give the text at an index, borrowed; null when @p list is null or the index is negative or not below
 * count. */
ZFX_API char *strptrlist_get(const strptrlist *list, int32_t index);

/**
 * Insert a copy of a text where it keeps the ascending order of strcmp().
 *
 * @param list the list, so far filled by this function only
 * @param text the text; null counts as ""
 * @return 0 on success; -1 for a null list or when memory is short, and the list keeps its texts
 *
 * Equal texts are kept; a new one goes in front of the one that the search meets.
 */
ZFX_API int32_t strptrlist_add_sorted(strptrlist *list, const char *text);

/**
 * Find a text in a list kept by strptrlist_add_sorted().
 *
 * @param list the list; null counts as empty
 * @param text the text; null counts as ""
 * @return the index of the text, or of one of several equal ones; -1 when there is none
 */
ZFX_API int32_t strptrlist_find_sorted(const strptrlist *list, const char *text);

/** Release the text at an index and move the later ones down.
 * @return 0; -1 for a null list or an index that is negative or not below count */
ZFX_API int32_t strptrlist_remove_at(strptrlist *list, int32_t index);

/** Release all texts and keep the slots; null is ignored. */
ZFX_API void strptrlist_clear(strptrlist *list);

/** Release a list with its texts; null is ignored. */
ZFX_API void strptrlist_delete(strptrlist *list);

ZFX_END_DECLS

#endif
