// Where printed JSON goes: a text that ends up in a heap block exactly as long as itself. GrowingText is the
// quick way, PieceByPiece the one that does with whatever memory there is.
#pragma once

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "decimal.hpp"

namespace zorvcrt {

/// Appends to a block that belongs to a caller, one exact block for each piece; a piece for which there is no
/// block is left out.
class PieceByPiece {
 public:
  PieceByPiece(char **buffer, std::size_t length) : buffer_(*buffer), length_(length) {}

  [[nodiscard]] std::size_t size() const { return length_; }

  void append(std::string_view piece) {
    auto *block = static_cast<char *>(std::realloc(buffer_, length_ + piece.size() + 1));
    if (block == nullptr) return;
    std::memcpy(block + length_, piece.data(), piece.size());
    length_ += piece.size();
    block[length_] = '\0';
    buffer_ = block;
  }
  void append_enclosed(std::string_view before, std::string_view piece, std::string_view behind) {
    append(before);
    append(piece);
    append(behind);
  }
  void append_integer(int64_t integer) {
    const DecimalText text(integer);
    append({text.data(), text.size()});
  }
  void indent(int32_t level) {
    append("\n");
    for (; level > 0; --level) {
      append("\t");
    }
  }

 private:
  char *&buffer_;
  std::size_t length_;
};

/// Appends to a block that belongs to a caller: short texts by way of an area in place, long ones in a block
/// that doubles and is cut to the exact length in the end. With one block for each piece the time would grow
/// with the square of the length.
class GrowingText {
 public:
  GrowingText(char **buffer, std::size_t length)
      : buffer_(*buffer), length_before_(length), was_null_(*buffer == nullptr) {
    begin_ = in_place_.data();
    next_ = begin_;
    limit_ = begin_ + in_place_.size();
  }
  GrowingText(const GrowingText &) = delete;
  GrowingText &operator=(const GrowingText &) = delete;

  [[nodiscard]] std::size_t size() const { return length_before_ + static_cast<std::size_t>(next_ - begin_); }

  void append(std::string_view piece) {
    if (!has_room(piece.size())) return;
    write(piece);
  }
  void append_enclosed(std::string_view before, std::string_view piece, std::string_view behind) {
    if (!has_room(before.size() + piece.size() + behind.size())) return;
    write(before);
    write(piece);
    write(behind);
  }
  void append_integer(int64_t integer) {
    if (has_room(kLongestInteger)) next_ = write_decimal(next_, integer);
  }
  void indent(int32_t level) {
    const auto tabs = static_cast<std::size_t>(level);
    if (!has_room(1 + tabs)) return;
    *next_++ = '\n';
    std::memset(next_, '\t', tabs);
    next_ += tabs;
  }

  /// Hands the exact text over. False when memory has run out on the way: the caller's text then is what it
  /// was.
  bool finish() {
    const std::size_t total = size();
    if (!failed_ && total != length_before_) resize_block(total + 1);
    if (failed_) {
      restore();
    } else if (buffer_ != nullptr) {
      buffer_[total] = '\0';
    }
    return !failed_;
  }

 private:
  static constexpr std::size_t kInPlace = 4096;
  static constexpr std::size_t kLongestInteger = 20;  // a sign and 19 digits

  [[nodiscard]] bool in_block() const { return begin_ != in_place_.data(); }

  // One byte more than asked for stays free for the terminator.
  bool has_room(std::size_t size) {
    if (static_cast<std::size_t>(limit_ - next_) > size) return true;
    return !failed_ && resize_block(2 * (this->size() + size) + 1);
  }

  void write(std::string_view piece) {
    std::memcpy(next_, piece.data(), piece.size());
    next_ += piece.size();
  }

  void restore() {
    if (was_null_) {
      std::free(buffer_);
      buffer_ = nullptr;
    } else if (in_block()) {
      buffer_[length_before_] = '\0';
    }
  }

  // Gives the caller's block the capacity, which holds at least the text so far and a terminator.
  bool resize_block(std::size_t capacity) {
    const auto written = static_cast<std::size_t>(next_ - begin_);
    auto *block = static_cast<char *>(std::realloc(buffer_, capacity));
    if (block == nullptr) {
      // Nothing is written any more; a block that merely could not be cut is not worth a failure.
      failed_ = !in_block() || capacity > length_before_ + written + 1;
      if (failed_) limit_ = next_;
      return false;
    }
    if (!in_block()) std::memcpy(block + length_before_, begin_, written);
    buffer_ = block;
    begin_ = block + length_before_;
    next_ = begin_ + written;
    limit_ = block + capacity;
    return true;
  }

  char *&buffer_;
  std::size_t length_before_;
  bool was_null_;
  char *begin_;  // of what this object has written
  char *next_;
  char *limit_;
  bool failed_ = false;
  std::array<char, kInPlace> in_place_;
};

}  // namespace zorvcrt
