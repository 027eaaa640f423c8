// Base64 (RFC 4648) into new buffers; what is not in the alphabet is skipped when decoding.
#include "Base64.h"

#include <cstring>

#include "Base64_kernels.hpp"
#include "result_block.hpp"

namespace {

constexpr uint64_t kLongestInput = UINT64_C(0xFFFFFFFF) / 4 * 3;  // its text still has a 32-bit length
constexpr uint64_t kDecodedExtra = 3;

uint64_t decoded_room(uint64_t sextets) {
  return sextets / 4 * 3 + kDecodedExtra;
}

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
  const std::size_t n = text == nullptr ? 0 : zorvcrt::base64_length(text, length);
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
