// A text that nobody can read past: its last byte is the last one before a page without access.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <string_view>

namespace guarded {

class Text {
 public:
  explicit Text(std::string_view text) : size_(text.size()) {
    pages_ = ::mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(pages_, MAP_FAILED);
    EXPECT_LE(size_, kPage);
    EXPECT_EQ(::mprotect(end(), kPage, PROT_NONE), 0);
    std::memcpy(end() - size_, text.data(), size_);
  }
  ~Text() { ::munmap(pages_, 2 * kPage); }
  Text(const Text &) = delete;
  Text &operator=(const Text &) = delete;

  [[nodiscard]] const char *data() const { return end() - size_; }

 private:
  static constexpr std::size_t kPage = 4096;

  [[nodiscard]] char *end() const { return static_cast<char *>(pages_) + kPage; }

  void *pages_;
  std::size_t size_;
};

/// Hands every beginning of the text to the function, as it stands before a page without access and as an
/// area of its own that is not a byte longer.
template <class Function>
void for_every_beginning(std::string_view text, Function function) {
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const std::string_view beginning = text.substr(0, length);
    const Text before_guard(beginning);
    function(before_guard.data(), length);
    auto *area = new char[length];
    std::memcpy(area, beginning.data(), length);
    function(area, length);
    delete[] area;
  }
}

}  // namespace guarded
