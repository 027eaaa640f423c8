// Shared libraries at run time. Nothing is ever handed to dlclose(): code and data of a library may still be
// in use wherever a host has passed its addresses on.
#include "dynlib.h"

#include <dlfcn.h>

#include <array>

#include "fixed_text.hpp"
#include "handles.hpp"

namespace {

constexpr const char *kNoPendingError = "Unknown error.";

// What GetDLError() returns; the byte behind the text it may hold stays unused.
std::array<char, 256> szDLError;
constexpr uint32_t kDLErrorRoom = 255;

}  // namespace

int32_t LoadDynLib(const char *path, DynLib **library) {
  if (library == nullptr) return DYNLIB_NOT_LOADED;
  *library = nullptr;
  auto record = zorvcrt::allocate_record<DynLib>();  // first: a library cannot be given back
  if (record == nullptr) return DYNLIB_NOT_LOADED;
  record->handle = ::dlopen(path, RTLD_NOW);
  if (record->handle == nullptr) return DYNLIB_NOT_LOADED;
  zorvcrt::copy_text(record->path, sizeof record->path, zorvcrt::view_of(path));
  *library = record.release();
  return 0;
}

int32_t LoadProc(const DynLib *library, int32_t /*unused*/, const char *name, void **address) {
  void *const found = library == nullptr || name == nullptr ? nullptr : ::dlsym(library->handle, name);
  if (address != nullptr) *address = found;
  return found != nullptr ? 0 : DYNLIB_NO_SYMBOL;
}

void ReleaseDynLibHandle(DynLib *library) {
  ZfxMemFree(library);
}

void UnloadDynLib(DynLib *library) {
  ZfxMemFree(library);
}

char *GetDynLoadError(char *buffer, uint32_t capacity) {
  const char *const pending = ::dlerror();
  zorvcrt::copy_text(buffer, capacity, pending != nullptr ? pending : kNoPendingError);
  return buffer;
}

char *GetDynLoadErrorV(char *buffer, uint32_t capacity) {
  return GetDynLoadError(buffer, capacity);
}

const char *GetDLError(void) {
  szDLError.fill('\0');
  return GetDynLoadError(szDLError.data(), kDLErrorRoom);
}
