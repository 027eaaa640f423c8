// The doubly linked list. Every removal unlinks through detach(), so the only link of a list is no special
// case.
#include "dllist.h"

#include "handles.hpp"

namespace {

using Link = zorvcrt::UniqueBlock<DLinkListLink>;

// Takes a link out of its list; its own neighbour fields stay as they were.
Link detach(DLinkList &list, DLinkListLink *link) {
  (link->previous == nullptr ? list.head : link->previous->next) = link->next;
  (link->next == nullptr ? list.tail : link->next->previous) = link->previous;
  return Link(link);
}

int32_t destroy_item(const DLinkList &list, void *item) {
  return list.destroy != nullptr && item != nullptr ? list.destroy(item) : 0;
}

}  // namespace

DLinkList *DLinkList_New(DLinkListDestroy destroy) {
  auto list = zorvcrt::allocate_record<DLinkList>();
  if (list) list->destroy = destroy;
  return list.release();
}

void DLinkList_Delete(DLinkList *list) {
  if (list == nullptr) return;
  for (DLinkListLink *link = list->head; link != nullptr;) {
    const Link owned(link);
    destroy_item(*list, link->item);
    link = link->next;
  }
  ZfxMemFree(list);
}

DLinkListLink *DLinkList_AppendItem(DLinkList *list, void *item) {
  if (list == nullptr) return nullptr;
  DLinkListLink *link = zorvcrt::allocate_record<DLinkListLink>().release();
  if (link == nullptr) return nullptr;
  link->item = item;
  link->previous = list->tail;
  (list->tail == nullptr ? list->head : list->tail->next) = link;
  list->tail = link;
  return link;
}

DLinkListLink *DLinkList_RemoveLink(DLinkList *list, DLinkListLink *link, int32_t direction) {
  if (list == nullptr || link == nullptr) return nullptr;
  const Link removed = detach(*list, link);
  destroy_item(*list, removed->item);
  if (direction == DLINKLIST_PREVIOUS) return removed->previous;
  return direction == DLINKLIST_NEXT ? removed->next : nullptr;
}

void *DLinkList_RemoveItem(DLinkList *list, DLinkListLink *link) {
  return list == nullptr || link == nullptr ? nullptr : detach(*list, link)->item;
}

int32_t DLinkList_DeleteItem(DLinkList *list, DLinkListLink *link) {
  void *item = DLinkList_RemoveItem(list, link);
  return list == nullptr ? 0 : destroy_item(*list, item);
}
