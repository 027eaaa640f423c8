// Events: a semaphore whose count says whether the event is set, looked at and not taken by those who wait.
#include "event.h"

#include <semaphore.h>

#include <cerrno>
#include <ctime>

#include "handles.hpp"

struct ZfxEvent {
  sem_t semaphore;
};

namespace {

int32_t refused_null() {
  errno = EINVAL;
  return -1;
}

bool is_set(ZfxEvent *event) {
  int value = 0;
  sem_getvalue(&event->semaphore, &value);
  return value > 0;
}

}  // namespace

ZfxEvent *ZfxCreateEvent() {
  auto event = zorvcrt::allocate_record<ZfxEvent>();
  if (event == nullptr) return nullptr;
  sem_init(&event->semaphore, 0, 0);  // cannot fail: it is private to the process, and 0 is in range
  return event.release();
}

void ZfxCloseEvent(ZfxEvent *event) {
  if (event == nullptr) return;
  sem_destroy(&event->semaphore);
  ZfxMemFree(event);
}

int32_t ZfxCheckEvent(ZfxEvent *event) {
  return event != nullptr && is_set(event) ? 1 : 0;
}

// Neither sleeps nor yields: callers rely on a reaction without the delay of being woken.
int32_t ZfxWaitEvent(ZfxEvent *event, int32_t seconds) {
  if (event == nullptr) return 0;
  const int64_t start = std::time(nullptr);
  bool set = is_set(event);
  while (!set && std::time(nullptr) - start < seconds) {
    set = is_set(event);
  }
  return set ? 1 : 0;
}

int32_t ZfxSetEvent(ZfxEvent *event) {
  if (event == nullptr) return refused_null();
  return is_set(event) ? 0 : sem_post(&event->semaphore);
}

int32_t ZfxResetEvent(ZfxEvent *event) {
  return event == nullptr ? refused_null() : sem_trywait(&event->semaphore);
}
