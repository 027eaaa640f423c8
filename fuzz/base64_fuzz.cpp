// Base64 against a plain coder: the input is taken once as bytes and once as a text.
#include "Base64.h"
#include "check.hpp"
#include "input.hpp"
#include "zfxmemory.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string plain_encoded(const std::string &bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += i + k > bytes.size() ? '=' : kAlphabet[group >> (18 - 6 * k) & 63];
    }
  }
  return text;
}

std::string plain_decoded(const std::string &text) {
  std::string bytes;
  uint32_t bits = 0;
  unsigned count = 0;
  const std::string_view alphabet(kAlphabet);
  for (const char c : text) {
    if (c == '\0' || c == '=') break;
    const std::size_t sextet = alphabet.find(c);
    if (sextet == std::string_view::npos) continue;
    bits = bits << 6 | static_cast<uint32_t>(sextet);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count);
  }
  return bytes;
}

std::string encoded(const std::string &bytes) {
  char *out = nullptr;
  const auto copy = fuzz::exact_copy(bytes);
  const uint32_t count = ZfxBase64Encode(copy.get(), static_cast<uint32_t>(bytes.size()), &out);
  const std::string text(out, count + 1);
  ZfxMemFree(out);
  fuzz::check_equal(text.back(), '\0', "end of the text");
  return text.substr(0, count);
}

// The block ends where the text does: with its last character, or with the terminator when the length is
// larger.
std::string decoded(const std::string &text, bool is_terminated = false) {
  void *out = nullptr;
  const auto copy = fuzz::exact_copy(text.c_str(), text.size() + (is_terminated ? 1 : 0));
  const auto limit = static_cast<uint32_t>(text.size() * (is_terminated ? 2 : 1));
  const uint32_t count = ZfxBase64Decode(copy.get(), limit, &out);
  const std::string bytes(static_cast<char *>(out), count + 1);
  ZfxMemFree(out);
  fuzz::check_equal(bytes.back(), '\0', "byte behind the block");
  return bytes.substr(0, count);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string input(reinterpret_cast<const char *>(data), size);
  fuzz::check_equal(decoded(input), plain_decoded(input), "decoded text");
  const std::string terminated = fuzz::c_text(input);
  fuzz::check_equal(decoded(terminated, true), plain_decoded(terminated), "decoded text up to its end");
  const std::string text = encoded(input);
  fuzz::check_equal(text, plain_encoded(input), "encoded bytes");
  fuzz::check_equal(decoded(text), input, "encoded and decoded bytes");
  return 0;
}
