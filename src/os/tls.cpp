// Thread-local storage: the system's keys, with the heap's release function as the destructor by default.
#include "tls.h"

#include <pthread.h>

#include <cerrno>
#include <type_traits>

#include "zfxmemory.h"

static_assert(std::is_same_v<pthread_key_t, uint32_t>, "callers keep the system's key in 32 bits");

int32_t ZfxCreateTLS(uint32_t *key, ZfxTLSDestructor destructor) {
  if (key == nullptr) return EINVAL;
  return pthread_key_create(key, destructor != nullptr ? destructor : ZfxGlobalTLSDestructor);
}

void ZfxGlobalTLSDestructor(void *value) {
  ZfxMemFree(value);
}

int32_t ZfxDeleteTLS(uint32_t key) {
  return pthread_key_delete(key);
}

int32_t ZfxSetTLSValue(uint32_t key, const void *value) {
  return pthread_setspecific(key, value);
}

void *ZfxGetTLSValue(uint32_t key) {
  return pthread_getspecific(key);
}
