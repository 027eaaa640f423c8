// The inner loops of the encodings and of comparing, for wide registers and plain: all do the same at every
// length and address.
#include <algorithm>
#include <cstring>
#include <vector>

#include "Base64_kernels.hpp"
#include "check.hpp"
#include "input.hpp"
#include "utf_kernels.hpp"
#include "uu_kernels.hpp"
#include "wide_registers.hpp"

namespace {

using Bytes = std::vector<uint8_t>;

std::string text_of(const Bytes &bytes, std::size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

template <class Kernel>
std::string result_of(Kernel kernel, std::size_t room) {
  Bytes out(room);
  const std::size_t size = kernel(out.data());
  return text_of(out, size);
}

void check_base64(const uint8_t *data, std::size_t n) {
  const auto text = fuzz::exact_copy(reinterpret_cast<const char *>(data), n);
  std::replace(text.get(), text.get() + n, '\0', '\n');
  std::replace(text.get(), text.get() + n, '=', '*');  // the loops are given what stands in front of padding
  const auto encoded = [&](auto kernel) {
    return result_of([&](uint8_t *out) { return kernel(data, n, reinterpret_cast<char *>(out)); },
                     (n + 2) / 3 * 4);
  };
  const auto decoded = [&](auto kernel) {
    const zorvcrt::Base64Extent extent{n / 3, n - n / 3};
    return result_of([&](uint8_t *out) { return kernel(text.get(), extent, out); }, n / 4 * 3 + 2);
  };
  const auto whole = fuzz::exact_copy(reinterpret_cast<const char *>(data), n);
  const auto check_form = [&](auto encode, auto decode, auto length) {
    fuzz::check_equal(length(whole.get(), n), zorvcrt::base64_length_plain(whole.get(), n),
                      "characters in front of the end");
    fuzz::check_equal(encoded(encode), encoded(zorvcrt::base64_encode_plain), "to Base64");
    fuzz::check_equal(decoded(decode), decoded(zorvcrt::base64_decode_plain), "from Base64");
  };
  check_form(zorvcrt::base64_encode_wide, zorvcrt::base64_decode_wide, zorvcrt::base64_length_wide);
  if (!zorvcrt::has_widest_registers()) return;
  check_form(zorvcrt::base64_encode_widest, zorvcrt::base64_decode_widest, zorvcrt::base64_length_widest);
}

void check_uu(const uint8_t *data, std::size_t n) {
  for (std::size_t i = 0; i + zorvcrt::kUuLineCharacters <= n; i += zorvcrt::kUuLineCharacters) {
    const auto encoded = [&](auto kernel) {
      return result_of(
          [&](uint8_t *out) { return kernel(data + i, reinterpret_cast<char *>(out)), std::size_t{60}; }, 60);
    };
    const auto decoded = [&](auto kernel) {
      return result_of(
          [&](uint8_t *out) {
            return kernel(reinterpret_cast<const char *>(data + i), out) ? std::size_t{45} : 0;
          },
          45);
    };
    fuzz::check_equal(encoded(zorvcrt::uu_encode_line_wide), encoded(zorvcrt::uu_encode_line_plain),
                      "to a line");
    fuzz::check_equal(decoded(zorvcrt::uu_decode_line_wide), decoded(zorvcrt::uu_decode_line_plain),
                      "from a line");
  }
}

void check_utf8(const uint8_t *data, std::size_t n) {
  std::vector<uint16_t> units(n / 2);
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  const uint64_t length = zorvcrt::utf8_length_plain(units.data(), units.size());
  fuzz::check_equal(zorvcrt::utf8_length_wide(units.data(), units.size()), length, "length as UTF-8");
  const auto converted = [&](auto kernel) {
    return result_of(
        [&](uint8_t *out) {
          auto *begin = reinterpret_cast<char *>(out);
          return static_cast<std::size_t>(kernel(units.data(), units.size(), begin) - begin);
        },
        length + zorvcrt::kUtf8Slack);
  };
  fuzz::check_equal(converted(zorvcrt::utf8_convert_wide), converted(zorvcrt::utf8_convert_plain),
                    "to UTF-8");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  if (!zorvcrt::has_wide_registers() || size == 0) return 0;
  // The first byte places the others at an address of its choice, in a block that ends where they end.
  const std::size_t offset = data[0] % 64U;
  const std::size_t n = size - 1;
  const auto block = std::make_unique<uint8_t[]>(offset + n);
  std::copy(data + 1, data + size, block.get() + offset);
  check_base64(block.get() + offset, n);
  check_uu(block.get() + offset, n);
  check_utf8(block.get() + offset, n);
  return 0;
}
