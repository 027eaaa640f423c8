// UCS-2 to UTF-8 into a block of the right size: the length is counted first, which takes less time than
// growing a text does.
#include "utf.h"

#include "result_block.hpp"
#include "utf_kernels.hpp"

int32_t Ucs2ToUtf8(const uint16_t *units, int32_t n, char **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  const std::size_t count = units == nullptr || n < 1 ? 0 : static_cast<std::size_t>(n);
  const uint64_t length = zorvcrt::utf8_length(units, count);
  if (length > INT32_MAX) return 0;
  auto text = zorvcrt::result_block<char>(length, length + 1 + zorvcrt::kUtf8Slack);
  if (!text) return 0;
  *zorvcrt::utf8_convert(units, count, text.get()) = '\0';
  *out = text.release();
  return static_cast<int32_t>(length);
}
