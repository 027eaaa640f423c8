/* The thread record as a C program sees it: the layout is pinned, for start routines compiled long ago. */
#include "thread.h"

#include <stddef.h>

_Static_assert(offsetof(ZfxThread, reserved) == 0, "reserved");
_Static_assert(offsetof(ZfxThread, thread) == 8, "thread");
_Static_assert(offsetof(ZfxThread, attr) == 16, "attr");
_Static_assert(offsetof(ZfxThread, mutex) == 16 + sizeof(pthread_attr_t), "mutex");
_Static_assert(offsetof(ZfxThread, threadEvent) == 24 + sizeof(pthread_attr_t), "threadEvent");
_Static_assert(offsetof(ZfxThread, stopEvent) == 32 + sizeof(pthread_attr_t), "stopEvent");
_Static_assert(offsetof(ZfxThread, userData) == 40 + sizeof(pthread_attr_t), "userData");
_Static_assert(sizeof(ZfxThread) == 48 + sizeof(pthread_attr_t), "record");

/* A start routine that doubles the number which its user data points to, and runs until it is stopped. */
void *routine_in_c(void *argument);

void *routine_in_c(void *argument) {
  ZfxThread *thread = argument;
  *(uint64_t *)thread->userData *= 2;
  ZfxSetEvent(thread->threadEvent);
  while (ZfxWaitEvent(thread->stopEvent, 1) == 0) {
  }
  ZfxThreadCleanup(thread);
  return NULL;
}
