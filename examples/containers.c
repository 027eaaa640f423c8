/* Build a text, keep names in order and walk a list whose items the list releases. */
#include <stdio.h>
#include <zorvcrt.h>

static int32_t release(void *item) {
  ZfxMemFree(item);
  return 0;
}

int main(void) {
  const char *names[] = {"gamma", "alpha", "beta"};
  strbuf *text = strbuf_create(64, "names:");
  strptrlist *sorted = strptrlist_new();
  DLinkList *list = DLinkList_New(release);
  DLinkListLink *link;
  int32_t i;

  if (text == NULL || sorted == NULL || list == NULL) return 1;
  for (i = 0; i < 3; ++i) {
    strptrlist_add_sorted(sorted, names[i]);
    DLinkList_AppendItem(list, ZfxStrDup(names[i]));
  }
  for (i = 0; i < 3; ++i)
    strbuf_append_format(text, " %d=%s", (int)i, strptrlist_get(sorted, i));
  printf("%s, beta is %d\n", strbuf_get(text), (int)strptrlist_find_sorted(sorted, "beta"));

  link = DLinkList_RemoveLink(list, list->head, DLINKLIST_NEXT);
  printf("behind the first: %s\n", (const char *)link->item);

  DLinkList_Delete(list);
  strptrlist_delete(sorted);
  strbuf_destroy(text);
  return 0;
}
