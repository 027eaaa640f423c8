// A plain restatement of the token rules, against which the scanner and the parser are compared.
#pragma once

#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "intconv.h"
#include "realconv.h"

namespace plain {

inline constexpr int kJam = -1000;

// One token as a caller sees it.
struct Seen {
  int code;
  std::string text;   // matched, with its white space
  std::string value;  // as a text: "i5", "d1.5", "sabc", ""
  int line = 0;
  int column = 0;
  bool operator==(const Seen &) const = default;
};

inline void PrintTo(const Seen &seen, std::ostream *stream) {
  *stream << seen.code << " '" << seen.text << "' " << seen.value << " to " << seen.line << '.'
          << seen.column;
}

// The rules of the token table, each as a function that tells how much of the text from a place it matches at
// most, and the choice among them.
struct PlainScanner {
  std::string text;
  std::size_t at = 0;
  int line = 1;
  int column = 1;

  static bool space(char c) { return std::strchr(" \t\r\n", c) != nullptr && c != '\0'; }
  static bool digit(char c) { return c >= '0' && c <= '9'; }

  // Length of an integer part, 0 for none.
  std::size_t integer(std::size_t from) const {
    std::size_t i = from;
    if (i < text.size() && text[i] == '-') ++i;
    if (i == text.size() || !digit(text[i])) return 0;
    if (text[i] == '0') return i + 1 - from;
    while (i < text.size() && digit(text[i]))
      ++i;
    return i - from;
  }
  std::size_t digits(std::size_t from) const {
    std::size_t i = from;
    while (i < text.size() && digit(text[i]))
      ++i;
    return i - from;
  }
  std::size_t number(std::size_t from) const {
    std::size_t i = from + integer(from);
    if (i == from) return 0;
    const std::size_t whole = i;
    if (i < text.size() && text[i] == '.' && digits(i + 1) > 0) i += 1 + digits(i + 1);
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
      const std::size_t sign = i + 1 < text.size() && (text[i + 1] == '+' || text[i + 1] == '-') ? 1 : 0;
      if (digits(i + 1 + sign) > 0) i += 1 + sign + digits(i + 1 + sign);
    }
    return i == whole ? 0 : i - from;
  }
  // All the ways to read a string at once: between two items, behind a backslash that begins a pair, or both.
  std::size_t string(std::size_t from) const {
    const char quote = text[from];
    if (quote != '"' && quote != '\'') return 0;
    std::size_t longest = 0;
    bool between = true;
    bool in_pair = false;
    for (std::size_t i = from + 1; i < text.size() && (between || in_pair); ++i) {
      if (between && text[i] == quote) longest = i + 1 - from;
      const bool next_between = (between && text[i] != quote) || (in_pair && text[i] != '\n');
      in_pair = between && text[i] == '\\';
      between = next_between;
    }
    return longest;
  }

  Seen next() {
    if (at == text.size()) return {0, "", "", line, column};
    std::size_t core = at;
    while (core < text.size() && space(text[core]))
      ++core;
    int code = 0;
    std::size_t longest = 0;
    const auto offer = [&](int candidate, std::size_t length) {
      if (length == 0) return;
      std::size_t end = core + length;
      while (end < text.size() && space(text[end]))
        ++end;
      if (end - at > longest) {
        longest = end - at;
        code = candidate;
      }
    };
    if (core < text.size()) {
      offer(258, integer(core));
      offer(259, number(core));
      offer(261, text.compare(core, 4, "true") == 0 ? 4 : 0);
      offer(262, text.compare(core, 5, "false") == 0 ? 5 : 0);
      offer(263, text.compare(core, 4, "null") == 0 ? 4 : 0);
      for (int i = 0; i < 6; ++i)
        offer(264 + i, text[core] == "{}[],:"[i] ? 1 : 0);
    }
    if (string(at) > longest) {
      longest = string(at);
      code = 260;
    }
    if (longest == 0) {
      longest = 1;
      code = text[at] == '\n' ? kJam : static_cast<signed char>(text[at]);
    }
    const std::string match = text.substr(at, longest);
    at += longest;
    Seen seen{code, match, ""};
    if (code == 258) seen.value = "i" + std::to_string(intconv_atoi64s(match.c_str(), 10, 0));
    if (code == 259) seen.value = "d" + std::to_string(realconv_atof(match.c_str(), 0));
    if (code == 260) seen.value = "s" + match.substr(1, match.size() - 2);
    for (const char c : match) {
      line += c == '\n' ? 1 : 0;
      column = c == '\n' ? 0 : column + 1;
    }
    seen.line = line;
    seen.column = column;
    return seen;
  }
};

inline std::string random_text(std::mt19937 &random, std::size_t longest) {
  static const std::vector<std::string> words = {"{",
                                                 "}",
                                                 "[",
                                                 "]",
                                                 ",",
                                                 ":",
                                                 " ",
                                                 " ",
                                                 "\n",
                                                 "\t",
                                                 "\r",
                                                 "\"",
                                                 "\"",
                                                 "'",
                                                 "\\",
                                                 "\\\"",
                                                 "-",
                                                 "0",
                                                 "1",
                                                 "27",
                                                 ".",
                                                 "e",
                                                 "E+",
                                                 "true",
                                                 "fals",
                                                 "false",
                                                 "null",
                                                 "nul",
                                                 "abc",
                                                 "\x80",
                                                 "\xff",
                                                 std::string(1, '\0'),
                                                 "                    ",
                                                 "\n                   ",
                                                 "0.123456789012345678",
                                                 "\"abcdefghijklmnopqrstuvwxyz\"",
                                                 "'it is\n'",
                                                 "123456789012345678901234567890"};
  std::string text;
  for (auto i = random() % longest; i > 0; --i)
    text += words[random() % words.size()];
  return text;
}

}  // namespace plain
