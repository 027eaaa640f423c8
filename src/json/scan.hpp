// The automaton of the scanner: one token from the beginning of a range of bytes. zjson_lex() and the parser
// both stand on it. It walks the bytes once; values, line feeds and the need for escaping fall out on the
// way.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "byte_block.hpp"
#include "decimal.hpp"

namespace zorvcrt {

/// The terminals, by their numbers in the grammar.
enum class Symbol : uint8_t {
  kEnd = 0,
  kUndefined = 2,
  kInteger = 3,
  kNumber,
  kString,
  kTrue,
  kFalse,
  kNull,
  kObjectBegin,
  kObjectEnd,
  kArrayBegin,
  kArrayEnd,
  kComma,
  kColon,
};

/// A matched token.
struct Token {
  Symbol symbol;       // kEnd for a byte of value 0 too
  bool needs_care;     // a string: not to be copied as it stands, it may hold control characters or quotes
  int32_t line_feeds;  // in the matched text
  const char *begin;   // the matched text, with the white space taken in
  const char *end;
  const char *new_line;  // behind the last line feed, when there is one
  union {
    int64_t integer;
    double number;
  };
};

enum class Scan {
  kMatched,
  kNeedsMore,  // the bytes end before the token is known to end; only where more may follow
  kJammed,     // a line feed that no token takes in
};

// All of it is inlined where it is used, so that the place is held in a register: kept in memory it made the
// scan half as fast.
#define ZORVCRT_INLINED [[gnu::always_inline]] inline

class TokenScan {
 public:
  /// @param begin     the first byte, which must exist
  /// @param limit     the end of the bytes
  /// @param is_whole  nothing follows the limit
  TokenScan(const char *begin, const char *limit, bool is_whole, Token &token)
      : at_(begin), limit_(limit), is_whole_(is_whole), token_(token) {
    token_.begin = begin;
    token_.line_feeds = 0;
  }

  ZORVCRT_INLINED Scan run() {
    skip_space();
    if (at_ == limit_) return is_whole_ ? lone_byte() : Scan::kNeedsMore;
    const Symbol symbol = kFirstByte[static_cast<unsigned char>(*at_)];
    switch (symbol) {
      case Symbol::kString:
        return string();
      case Symbol::kInteger:
        return number();
      case Symbol::kTrue:
        return word("true", Symbol::kTrue);
      case Symbol::kFalse:
        return word("false", Symbol::kFalse);
      case Symbol::kNull:
        return word("null", Symbol::kNull);
      case Symbol::kUndefined:
        return lone_byte();
      default:
        ++at_;
        return match(symbol);
    }
  }

 private:
  // What a token can be that begins with the byte; kUndefined for none of the table.
  static constexpr auto kFirstByte = [] {
    std::array<Symbol, 256> symbols{};
    symbols.fill(Symbol::kUndefined);
    for (unsigned char c = '0'; c <= '9'; ++c) {
      symbols[c] = Symbol::kInteger;
    }
    symbols['-'] = Symbol::kInteger;
    symbols['"'] = Symbol::kString;
    symbols['\''] = Symbol::kString;
    symbols['t'] = Symbol::kTrue;
    symbols['f'] = Symbol::kFalse;
    symbols['n'] = Symbol::kNull;
    symbols['{'] = Symbol::kObjectBegin;
    symbols['}'] = Symbol::kObjectEnd;
    symbols['['] = Symbol::kArrayBegin;
    symbols[']'] = Symbol::kArrayEnd;
    symbols[','] = Symbol::kComma;
    symbols[':'] = Symbol::kColon;
    return symbols;
  }();

  static bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

  ZORVCRT_INLINED void count_line_feeds(const char *block, unsigned bits) {
    for (; bits != 0; bits &= bits - 1) {
      ++token_.line_feeds;
      token_.new_line = block + std::countr_zero(bits) + 1;
    }
  }

  ZORVCRT_INLINED void skip_space() {
    // Most tokens have none or one byte of it next to them.
    if (at_ == limit_ || static_cast<unsigned char>(*at_) > ' ') return;
#ifndef ZORVCRT_PORTABLE
    constexpr std::ptrdiff_t kBlock = sizeof(ByteBlock);
    // Indented text has long runs of it: a block at a time.
    while (limit_ - at_ >= kBlock) {
      const ByteBlock block = load_block(at_);
      const unsigned line_feeds = find_in_block(block, '\n');
      const unsigned spaces =
          line_feeds | find_in_block(block, ' ') | find_in_block(block, '\t') | find_in_block(block, '\r');
      const unsigned others = ~spaces & 0xFFFFU;
      if (others != 0) {
        const auto run = static_cast<unsigned>(std::countr_zero(others));
        count_line_feeds(at_, line_feeds & lowest_bits(run));
        at_ += run;
        return;
      }
      count_line_feeds(at_, line_feeds);
      at_ += kBlock;
    }
#endif
    for (; at_ != limit_ && is_space(*at_); ++at_) {
      count_line_feeds(at_, *at_ == '\n' ? 1 : 0);
    }
  }

  // The end of a token of the table that takes white space in on both sides.
  ZORVCRT_INLINED Scan match(Symbol symbol) {
    skip_space();
    if (at_ == limit_ && !is_whole_) return Scan::kNeedsMore;
    token_.symbol = symbol;
    token_.end = at_;
    return Scan::kMatched;
  }

  // The first byte as a token of its own, since none of the table begins here.
  ZORVCRT_INLINED Scan lone_byte() {
    if (*token_.begin == '\n') return Scan::kJammed;
    token_.symbol = *token_.begin == '\0' ? Symbol::kEnd : Symbol::kUndefined;
    token_.end = token_.begin + 1;
    token_.line_feeds = 0;
    return Scan::kMatched;
  }

  ZORVCRT_INLINED Scan word(std::string_view letters, Symbol symbol) {
    const auto room = static_cast<std::size_t>(limit_ - at_);
    const std::size_t common = letters.size() < room ? letters.size() : room;
    if (std::memcmp(at_, letters.data(), common) != 0) return lone_byte();
    if (common < letters.size()) return is_whole_ ? lone_byte() : Scan::kNeedsMore;
    at_ += letters.size();
    return match(symbol);
  }

  bool at_digit(const char *place) const {
    return place != limit_ && is_decimal_digit(*place);
  }
  // Whether it takes more input to see what stands at the place.
  bool is_open(const char *place) const {
    return place == limit_ && !is_whole_;
  }

  // Gathers the run of digits, wrapping; returns how many there are.
  ZORVCRT_INLINED std::size_t digits(uint64_t &value) {
    const char *const first = at_;
    uint64_t sum = 0;
    for (; at_ != limit_ && is_decimal_digit(*at_); ++at_) {
      sum = sum * 10 + decimal_digit(*at_);
    }
    value = sum;
    return static_cast<std::size_t>(at_ - first);
  }

  ZORVCRT_INLINED Scan number() {
    const char *const first = at_;
    const bool negative = *at_ == '-';
    if (negative) {
      ++at_;
      if (is_open(at_)) return Scan::kNeedsMore;
      if (!at_digit(at_)) return lone_byte();
    }
    uint64_t integer = 0;
    if (*at_ == '0') {
      ++at_;
    } else {
      digits(integer);
    }

    bool real = false;
    uint64_t fraction = 0;
    std::size_t fraction_digits = 0;
    if (at_ != limit_ && *at_ == '.') {
      if (is_open(at_ + 1)) return Scan::kNeedsMore;
      if (at_digit(at_ + 1)) {
        real = true;
        ++at_;
        fraction_digits = digits(fraction);
      }
    }
    if (at_ != limit_ && (*at_ == 'e' || *at_ == 'E')) {
      const char *exponent = at_ + 1;
      if (exponent != limit_ && (*exponent == '+' || *exponent == '-')) ++exponent;
      if (is_open(exponent)) return Scan::kNeedsMore;
      if (at_digit(exponent)) {  // passed over: the values have no exponent
        real = true;
        at_ = exponent;
        uint64_t unused = 0;
        digits(unused);
      }
    }

    if (real) {
      const double value = real_of_parts(integer, fraction, fraction_digits);
      token_.number = negative ? -value : value;
      return match(Symbol::kNumber);
    }
    token_.integer = as_signed(negative ? 0 - integer : integer);
    if (first != token_.begin && !is_blank(token_.begin, first)) token_.integer = 0;
    return match(Symbol::kInteger);
  }

  // Integers are read behind blanks and tabs only; behind a line feed or carriage return they count 0.
  static bool is_blank(const char *begin, const char *end) {
    for (; begin != end; ++begin) {
      if (*begin != ' ' && *begin != '\t') return false;
    }
    return true;
  }

  // Goes to the next quote; true when there is one. Takes note of control characters on the way.
  ZORVCRT_INLINED bool find_quote(char quote, bool &controls) {
#ifndef ZORVCRT_PORTABLE
    constexpr std::ptrdiff_t kBlock = sizeof(ByteBlock);
    while (limit_ - at_ >= kBlock) {
      const ByteBlock block = load_block(at_);
      const unsigned quotes = find_in_block(block, quote);
      const unsigned found = find_controls(block);
      if (quotes != 0) {
        const auto run = static_cast<unsigned>(std::countr_zero(quotes));
        controls = controls || (found & lowest_bits(run)) != 0;
        at_ += run;
        return true;
      }
      controls = controls || found != 0;
      at_ += kBlock;
    }
#endif
    for (; at_ != limit_; ++at_) {
      if (*at_ == quote) return true;
      controls = controls || static_cast<unsigned char>(*at_) < ' ';
    }
    return false;
  }

  ZORVCRT_INLINED Scan string() {
    if (at_ != token_.begin) return lone_byte();
    const char quote = *at_++;
    const char *end = nullptr;  // behind the last quote that can end the string
    bool controls = false;
    while (find_quote(quote, controls)) {
      ++at_;
      end = at_;
      if (at_[-2] != '\\') return match_string(quote, end, controls);
    }
    if (!is_whole_) return Scan::kNeedsMore;
    return end == nullptr ? lone_byte() : match_string(quote, end, true);
  }

  ZORVCRT_INLINED Scan match_string(char quote, const char *end, bool controls) {
    token_.symbol = Symbol::kString;
    token_.end = end;
    // Between double quotes every other double quote has a backslash before it and needs no more of them.
    token_.needs_care = controls || quote != '"';
    if (controls) {
      for (const char *place = token_.begin; place != end; ++place) {
        count_line_feeds(place, *place == '\n' ? 1 : 0);
      }
    }
    return Scan::kMatched;
  }

  const char *at_;
  const char *const limit_;
  const bool is_whole_;
  Token &token_;
};

#undef ZORVCRT_INLINED

}  // namespace zorvcrt
