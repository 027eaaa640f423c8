// Base64 (RFC 4648) into new buffers; what is not in the alphabet is skipped when decoding.
#include "Base64.h"

#include <cstring>

#include "Base64_kernels.hpp"
#include "result_block.hpp"

namespace {

constexpr uint64_t kLongestInput = UINT64_C(0xFFFFFFFF) / 4 * 3;  // its text still has a 32-bit length

// Zeros behind a text and behind bytes: a fixed number is one store, one that has to be worked out is a call
// that takes a tenth of the time of 48 bytes.
constexpr std::size_t kZerosBehindText = 4;
constexpr std::size_t kZerosBehindBytes = 3;

// Up to two bytes come of the sextets behind the last whole group.
std::size_t room_for(const zorvcrt::Base64Extent &extent) {
  return (extent.known + extent.unknown) / 4 * 3 + 2 + kZerosBehindBytes;
}

// A block for the bytes of a text. Where memory is short for all that the text may have, its end is looked
// for.
zorvcrt::UniqueBlock<uint8_t> block_for(const char *text, zorvcrt::Base64Extent &extent) {
  auto block = zorvcrt::unwritten_block<uint8_t>(room_for(extent));
  if (!block && extent.unknown != 0) {
    extent = {extent.known + zorvcrt::base64_length(text + extent.known, extent.unknown), 0};
    block = zorvcrt::unwritten_block<uint8_t>(room_for(extent));
  }
  return block;
}

}  // namespace

uint32_t ZfxBase64Encode(const void *data, uint32_t length, char **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  const std::size_t n = data == nullptr ? 0 : length;
  if (n > kLongestInput) return 0;
  const std::size_t count = (n + 2) / 3 * 4;
  auto text = zorvcrt::unwritten_block<char>(count + kZerosBehindText);
  if (!text) return 0;
  const auto *bytes = static_cast<const uint8_t *>(data);
  zorvcrt::base64_encode(bytes, n, text.get());
  std::memset(text.get() + count, 0, kZerosBehindText);
  *out = text.release();
  return static_cast<uint32_t>(count);
}

uint32_t ZfxBase64Decode(const char *text, uint32_t length, void **out) {
  if (out == nullptr) return 0;
  *out = nullptr;
  auto extent = text == nullptr ? zorvcrt::Base64Extent{} : zorvcrt::base64_extent(text, length);
  auto data = block_for(text, extent);
  if (!data) return 0;
  const std::size_t count = zorvcrt::base64_decode(text, extent, data.get());
  std::memset(data.get() + count, 0, kZerosBehindBytes);
  const std::size_t used = count + kZerosBehindBytes;
  *out = data.release();
  if (used < room_for(extent) / 2) {
    void *fitted = ZfxMemRealloc(*out, used);
    if (fitted != nullptr) *out = fitted;
  }
  return static_cast<uint32_t>(count);
}
