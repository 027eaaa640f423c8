// Counting semaphores, and the wait for one that is measured in processor time.
#include <semaphore.h>

#include <ctime>

#include "handles.hpp"
#include "zfxsemaphore.h"

struct ZfxSemaphore {
  sem_t semaphore;
};

namespace {

constexpr int64_t kTicksPerMillisecond = CLOCKS_PER_SEC / 1000;
constexpr timespec kPause = {0, 50};

bool taken(ZfxSemaphore *semaphore) {
  return sem_trywait(&semaphore->semaphore) == 0;
}

}  // namespace

ZfxSemaphore *ZfxCreateSemaphore(uint32_t count) {
  auto semaphore = zorvcrt::allocate_record<ZfxSemaphore>();
  if (semaphore == nullptr || sem_init(&semaphore->semaphore, 0, count) == -1) return nullptr;
  return semaphore.release();
}

void ZfxDestroySemaphore(ZfxSemaphore *semaphore) {
  if (semaphore == nullptr) return;
  sem_destroy(&semaphore->semaphore);
  ZfxMemFree(semaphore);
}

void ZfxSemaphoreObtain(ZfxSemaphore *semaphore) {
  // An interrupted wait is not taken up again: a signal handler may be what is to end it.
  if (semaphore != nullptr) sem_wait(&semaphore->semaphore);
}

int32_t ZfxSemaphoreTryObtain(ZfxSemaphore *semaphore, int32_t milliseconds) {
  if (semaphore == nullptr) return 0;
  if (milliseconds < 1) return taken(semaphore) ? 1 : 0;
  const int64_t start = std::clock();
  while (!taken(semaphore)) {
    const int64_t used = std::clock() - start;
    if (used / kTicksPerMillisecond >= milliseconds) return 0;
    // While the processor clock stands still a pause would only make the wait longer.
    if (used != 0) nanosleep(&kPause, nullptr);
  }
  return 1;
}

void ZfxSemaphoreRelease(ZfxSemaphore *semaphore) {
  if (semaphore != nullptr) sem_post(&semaphore->semaphore);
}
