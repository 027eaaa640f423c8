// UCS-2 to UTF-8 into a block of the right size: the length is counted first, which takes less time than
// growing a text does.
#include "utf.h"

#include "result_block.hpp"
#include "utf_kernels.hpp"

namespace {

constexpr std::size_t kLongestUnit = 3;  // bytes of UTF-8

// A short text gets room for the longest text that its units can make: counting takes a third of its time.
constexpr std::size_t kShort = 64;

uint64_t room_for(const uint16_t *units, std::size_t count) {
  return count <= kShort ? count * kLongestUnit : zorvcrt::utf8_length(units, count);
}

}  // namespace

int32_t Ucs2ToUtf8(const uint16_t *units, int32_t n, char **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  const std::size_t count = units == nullptr || n < 1 ? 0 : static_cast<std::size_t>(n);
  const uint64_t room = room_for(units, count);
  if (room > INT32_MAX) return 0;
  auto text = zorvcrt::unwritten_block<char>(room + 1 + zorvcrt::kUtf8Slack);
  if (!text) return 0;
  char *const end = zorvcrt::utf8_convert(units, count, text.get());
  *end = '\0';
  *out = text.release();
  return static_cast<int32_t>(end - *out);
}
