// UCS-2 units to UTF-8 against the three forms said again.
#include <cstring>
#include <vector>

#include "check.hpp"
#include "input.hpp"
#include "utf.h"
#include "zfxmemory.h"

namespace {

std::string plain(const std::vector<uint16_t> &units) {
  std::string text;
  for (const uint32_t unit : units) {
    if (unit > 0x7FF) {
      text += static_cast<char>(0xE0 + (unit >> 12));
      text += static_cast<char>(0x80 + (unit >> 6 & 0x3F));
    } else if (unit > 0x7F) {
      text += static_cast<char>(0xC0 + (unit >> 6));
    }
    text += static_cast<char>(unit > 0x7F ? 0x80 + (unit & 0x3F) : unit);
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  std::vector<uint16_t> units(size / 2);
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  const auto copy = fuzz::exact_copy(units.data(), units.size());
  char *out = nullptr;
  const int32_t length = Ucs2ToUtf8(copy.get(), static_cast<int32_t>(units.size()), &out);
  const std::string text(out, static_cast<std::size_t>(length) + 1);
  ZfxMemFree(out);
  fuzz::check_equal(text, plain(units) + '\0', "text");
  return 0;
}
