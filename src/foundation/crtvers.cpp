// The version text of the library.
#include "crtvers.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

constexpr std::string_view kVersion = "8.4-4:1";

}  // namespace

void ZfxGetCrtVersion(char *buffer, uint64_t size) {
  if (buffer == nullptr) return;
  *buffer = '\0';
  if (size == 0) return;
  const uint64_t count = std::min<uint64_t>(size - 1, kVersion.size());
  std::memcpy(buffer, kVersion.data(), count);
  buffer[count] = '\0';
}
