/**
 * @file dllist.h
 * A doubly linked list of items that the list does not look into.
 *
 * The records may be read freely to walk the list; they are changed through the functions only. Links belong
 * to the list. Items belong to whoever supplied them, unless the list has a destroy callback, which releases
 * them. A link that is handed in must be one of the list's own and not have been removed.
 *
 * Re-entrant; nothing is locked, so one list must not be changed while another thread uses it.
 */
#ifndef ZORVCRT_DLLIST_H
#define ZORVCRT_DLLIST_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** Releases an item. @param item never null @return anything; DLinkList_DeleteItem() hands it on */
typedef int32_t (*DLinkListDestroy)(void *item);

/** One place of a list. */
typedef struct DLinkListLink {
  void *item;                     /**< what the caller supplied; may be null */
  struct DLinkListLink *previous; /**< null at the head */
  struct DLinkListLink *next;     /**< null at the tail */
} DLinkListLink;

/** A list. */
typedef struct DLinkList {
  DLinkListDestroy destroy; /**< releases items; null leaves them to their owner */
  DLinkListLink *head;      /**< first link, null when the list is empty */
  DLinkListLink *tail;      /**< last link, null when the list is empty */
} DLinkList;

#define DLINKLIST_PREVIOUS 1 /**< DLinkList_RemoveLink() returns the link before */
#define DLINKLIST_NEXT 2     /**< DLinkList_RemoveLink() returns the link behind */

/** Create an empty list, to be given back with DLinkList_Delete().
 * @param destroy releases items; null leaves them to their owner
 * @return the list; null when memory is short */
ZFX_API DLinkList *DLinkList_New(DLinkListDestroy destroy);

/** Release a list from head to tail, its items through the callback; null is ignored. */
ZFX_API void DLinkList_Delete(DLinkList *list);

/** Append an item at the tail.
 * @param list the list; null appends nothing
 * @param item the item; null is kept like any other, but never handed to the callback
 * @return the new link; null for a null list or when memory is short, and the item is then still the caller's
 */
ZFX_API DLinkListLink *DLinkList_AppendItem(DLinkList *list, void *item);

/**
 * Remove a link and release its item through the callback: the operation for deleting while iterating.
 *
 * @param list      the list; null removes nothing and gives null
 * @param link      the link; null gives null
 * @param direction which neighbour to return
 * @return the link's former previous link for DLINKLIST_PREVIOUS, its former next for DLINKLIST_NEXT, null
 *         for any other direction and where there is no such neighbour
 */
ZFX_API DLinkListLink *DLinkList_RemoveLink(DLinkList *list, DLinkListLink *link, int32_t direction);

/**
 * Remove a link and keep its item: the callback is not called.
 *
 * @param list the list; null removes nothing and gives null
 * @param link the link; null gives null. The only link of a list may be given as well and leaves it empty.
 * @return the item, which is the caller's again
 */
ZFX_API void *DLinkList_RemoveItem(DLinkList *list, DLinkListLink *link);

/** Remove a link and release its item through the callback; list and link as for DLinkList_RemoveItem().
 * @return the callback's result; 0 when the list has none or the item is null */
ZFX_API int32_t DLinkList_DeleteItem(DLinkList *list, DLinkListLink *link);

ZFX_END_DECLS

#endif
