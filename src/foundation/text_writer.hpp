// Writing a text piece by piece into an area that belongs to somebody else; what does not fit is cut.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>

namespace zorvcrt {

/// Appends to an area of at least 1 byte, which holds a terminated text after finish().
class TextWriter {
 public:
  explicit TextWriter(std::span<char> area) : area_(area) {}

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::string_view view() const { return {area_.data(), size_}; }

  TextWriter &append(std::string_view text) {
    const std::size_t room = area_.size() - 1 - size_;
    const std::size_t count = text.size() < room ? text.size() : room;
    // memmove, because callers may hand over a text that lies in the area itself
    if (count != 0) std::memmove(area_.data() + size_, text.data(), count);
    size_ += count;
    return *this;
  }

  template <std::integral Number>
  TextWriter &append_number(Number number) {
    std::array<char, std::numeric_limits<Number>::digits10 + 3> digits;  // a partial digit, a sign, a spare
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return append({digits.data(), static_cast<std::size_t>(end - digits.data())});
  }

  /// Terminates the text and gives its length.
  std::size_t finish() {
    area_[size_] = '\0';
    return size_;
  }

 private:
  std::span<char> area_;
  std::size_t size_ = 0;
};

}  // namespace zorvcrt
