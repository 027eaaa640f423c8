/* The thread record as a C program sees it. */
#include "thread.h"

#include <stddef.h>

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
