// Zero-terminated texts in areas of a known size: what does not fit is cut, nothing is written past the end.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zorvcrt {

/// A text as a view; null counts as empty.
inline std::string_view view_of(const char *text) {
  return text == nullptr ? "" : text;
}

/// Copies @p text, cut to @p size - 1 bytes, into a caller's area and terminates it. A null area or a size
/// below 1 receives nothing. Returns the number of bytes copied. The two may overlap.
inline std::size_t copy_text(char *area, int64_t size, std::string_view text) {
  if (area == nullptr || size < 1) return 0;
  const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
  if (count != 0) std::memmove(area, text.data(), count);
  area[count] = '\0';
  return count;
}

/// A text of at most N - 1 bytes in an area of N bytes of its own.
template <std::size_t N>
class FixedText {
  static_assert(N > 0, "the terminator needs a byte");

 public:
  FixedText() { area_[0] = '\0'; }
  explicit FixedText(std::string_view text) : FixedText() { append(text); }

  static constexpr std::size_t capacity() { return N - 1; }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }
  [[nodiscard]] const char *c_str() const { return area_.data(); }
  [[nodiscard]] std::string_view view() const { return {area_.data(), size_}; }

  /// The whole area, for a call that fills it; follow with set_size() or terminated_by_callee().
  [[nodiscard]] char *data() { return area_.data(); }
  void set_size(std::size_t size) {
    size_ = std::min(size, capacity());
    area_[size_] = '\0';
  }
  void terminated_by_callee() { set_size(::strnlen(area_.data(), capacity())); }

  void clear() { set_size(0); }
  void truncate(std::size_t size) { set_size(std::min(size, size_)); }

  FixedText &assign(std::string_view text) {
    size_ = copy_text(area_.data(), static_cast<int64_t>(N), text);
    return *this;
  }
  FixedText &append(std::string_view text) {
    size_ += copy_text(area_.data() + size_, static_cast<int64_t>(N - size_), text);
    return *this;
  }
  FixedText &append(char c) { return append(std::string_view(&c, 1)); }

 private:
  std::size_t size_ = 0;
  std::array<char, N> area_;  // not cleared: only the bytes up to size_ and the terminator have a meaning
};

}  // namespace zorvcrt
