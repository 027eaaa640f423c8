// Base64 (RFC 4648) into new buffers; what is not in the alphabet is skipped when decoding.
#include "Base64.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Base64_kernels.hpp"
#include "byte_block.hpp"
#include "result_block.hpp"

namespace {

constexpr uint64_t kLongestInput = UINT64_C(0xFFFFFFFF) / 4 * 3;  // its text still has a 32-bit length
constexpr uint64_t kDecodedExtra = 3;

uint64_t decoded_room(uint64_t sextets) {
  return sextets / 4 * 3 + kDecodedExtra;
}

#ifdef ZORVCRT_PORTABLE

// The bytes in front of the first zero byte or '=', at most length of them.
std::size_t length_of_text(const char *text, std::size_t length) {
  std::size_t n = 0;
  while (text != nullptr && n < length && text[n] != '\0' && text[n] != zorvcrt::kBase64Padding) {
    ++n;
  }
  return n;
}

#else

constexpr std::size_t kBlock = sizeof(zorvcrt::ByteBlock);

// One bit for each byte of an aligned block at which a text ends.
__attribute__((no_sanitize("address", "thread"))) unsigned ends_in(uintptr_t block) {
  // The block can begin in front of the text, where no pointer of it leads.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  const auto bytes = *reinterpret_cast<const zorvcrt::ByteBlock *>(block);
  return zorvcrt::find_in_block(bytes, '\0') | zorvcrt::find_in_block(bytes, zorvcrt::kBase64Padding);
}

// The same, a block at a time. Whole aligned blocks are looked at: such a block lies in one page, so no page
// is touched that the text does not reach.
std::size_t length_of_text(const char *text, std::size_t length) {
  if (text == nullptr || length == 0) return 0;
  const auto start = reinterpret_cast<uintptr_t>(text);
  uintptr_t block = start / kBlock * kBlock;
  unsigned ends = ends_in(block) >> (start - block) << (start - block);
  while (ends == 0) {
    block += kBlock;
    if (block - start >= length) return length;
    ends = ends_in(block);
  }
  return std::min(length, block - start + static_cast<std::size_t>(std::countr_zero(ends)));
}

#endif

}  // namespace

uint32_t ZfxBase64Encode(const void *data, uint32_t length, char **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  const std::size_t n = data == nullptr ? 0 : length;
  if (n > kLongestInput) return 0;
  const std::size_t count = (n + 2) / 3 * 4;
  auto text = zorvcrt::result_block<char>(count, count + 2);
  if (!text) return 0;
  const auto *bytes = static_cast<const uint8_t *>(data);
  zorvcrt::base64_encode(bytes, n, text.get());
  *out = text.release();
  return static_cast<uint32_t>(count);
}

uint32_t ZfxBase64Decode(const char *text, uint32_t length, void **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  const std::size_t n = length_of_text(text, length);
  const uint64_t room = decoded_room(n);
  auto data = zorvcrt::result_block<uint8_t>(room, room);
  if (!data) return 0;
  const std::size_t count = zorvcrt::base64_decode(text, n, data.get());
  // count / 3 * 4 sextets are certain, and with up to three more the block is no larger
  const uint64_t used = count / 3 * 3 + kDecodedExtra;
  std::memset(data.get() + count, 0, used - count);
  *out = data.release();
  if (used < room / 2) {
    void *fitted = ZfxMemRealloc(*out, used);
    if (fitted != nullptr) *out = fitted;
  }
  return static_cast<uint32_t>(count);
}
