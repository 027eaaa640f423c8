// The function behind one of the same name, for functions of the tests that stand in front of the C
// library's.
#pragma once

#include <dlfcn.h>

#include <cstring>

namespace support {

// One for each source, so that a copy with a sanitizer's checks never serves what runs before the sanitizer
// does.
template <class Function>
static Function next_function(const char *name) {
  Function function = nullptr;
  void *found = ::dlsym(RTLD_NEXT, name);
  std::memcpy(&function, &found, sizeof function);
  return function;
}

}  // namespace support
