// The bytes that a fuzzer supplies, taken apart from front to back. What is missing at the end counts as
// zeros, so that every input is a valid script.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace fuzz {

/// Ends a part of an input; a byte that no UTF-8 text has.
inline constexpr char kPartEnd = '\xFF';

class Input {
 public:
  Input(const uint8_t *data, std::size_t size) : rest_(reinterpret_cast<const char *>(data), size) {}

  [[nodiscard]] bool is_empty() const { return rest_.empty(); }

  uint8_t byte() { return integer<uint8_t>(); }

  /// An integer in as many bytes as its type has, the lowest first.
  template <class Integer>
  Integer integer() {
    uint64_t value = 0;
    for (unsigned place = 0; place < sizeof(Integer) && !rest_.empty(); ++place) {
      value |= uint64_t{static_cast<uint8_t>(rest_[0])} << (8 * place);
      rest_.remove_prefix(1);
    }
    return static_cast<Integer>(value);
  }

  /// A number from low to high, of one byte where that is enough and else of two.
  int32_t within(int32_t low, int32_t high) {
    const int32_t count = high - low + 1;
    return low + (count <= 256 ? int32_t{byte()} : int32_t{integer<uint16_t>()}) % count;
  }

  /// The next bytes, as many as there are of those wanted.
  std::string text(std::size_t wanted) {
    const std::string taken(rest_.substr(0, wanted));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  /// The bytes up to an end mark, which is passed over, or to the end.
  std::string until(char end) {
    const std::string taken = text(std::min(rest_.find(end), rest_.size()));
    if (!rest_.empty()) rest_.remove_prefix(1);
    return taken;
  }
  std::string line() { return until('\n'); }
  std::string part() { return until(kPartEnd); }
  std::string rest() { return text(rest_.size()); }

 private:
  std::string_view rest_;
};

/// A copy without terminator in a block of its own size, in which a sanitizer sees a read past the end.
template <class Item = char>
std::unique_ptr<Item[]> exact_copy(const Item *items, std::size_t count) {
  std::unique_ptr<Item[]> copy(new Item[count]);
  std::copy(items, items + count, copy.get());
  return copy;
}

inline std::unique_ptr<char[]> exact_copy(std::string_view text) {
  return exact_copy(text.data(), text.size());
}

/// A text without what follows its first zero byte, as a C text shows it.
inline std::string c_text(const std::string &text) {
  return text.c_str();
}

}  // namespace fuzz

/// What every target defines: takes one input apart, calls the library and compares. Always gives 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);
