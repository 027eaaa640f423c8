// A plain model of the two date readers: a table of states and patterns, interpreted row by row.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace model {

/// One transition. The first row of the state whose pattern fits what stands at the position is taken; when
/// none fits, the text is a failure. In a pattern
///   9  stands for a digit,         ~  for no digit here or the end of the text,
///   *  for any character,          $  for the end of the text,
///   |  for one of "-./",           ?  for one of "+-Z",
///   _  for white space,            all others for themselves.
/// As many characters are used up as the stores text is long. Each of its letters names the field to which
/// the character is added as a decimal digit; '0' adds a zero to the field of the letter before, '_' passes
/// over a character, '=' adds it to the zone text, '#' stores the number of the row among those of its state,
/// from 1.
struct Row {
  const char *state;
  const char *pattern;
  const char *stores;
  const char *next;
};

struct Result {
  bool accepted = false;
  std::array<int32_t, 128> field{};  // by the letter of the store
  std::string zone;
  std::string state;  // in which the text ended
};

inline bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

inline bool is_one_of(const char *set, char c) {
  return c != '\0' && std::strchr(set, c) != nullptr;
}

inline bool fits(std::string_view pattern, std::string_view text) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool ended = i >= text.size();
    const char c = ended ? '\0' : text[i];
    switch (pattern[i]) {
      case '~':
        if (!ended && is_digit(c)) return false;
        break;
      case '$':
        if (!ended) return false;
        break;
      case '9':
        if (ended || !is_digit(c)) return false;
        break;
      case '*':
        if (ended) return false;
        break;
      case '|':
        if (ended || !is_one_of("-./", c)) return false;
        break;
      case '?':
        if (ended || !is_one_of("+-Z", c)) return false;
        break;
      case '_':
        if (ended || !is_one_of(" \t\n\r", c)) return false;
        break;
      default:
        if (ended || c != pattern[i]) return false;
    }
  }
  return true;
}

inline void add_digit(int32_t &field, char c) {
  field = static_cast<int32_t>(static_cast<uint32_t>(field) * 10U + static_cast<uint32_t>(c - '0'));
}

inline Result run(const std::vector<Row> &table, const char *start, std::string_view text) {
  Result result;
  result.state = start;
  while (!text.empty()) {
    const Row *taken = nullptr;
    int32_t number = 0;
    for (const Row &row : table) {
      if (taken != nullptr || result.state != row.state) continue;
      ++number;
      if (fits(row.pattern, text)) taken = &row;
    }
    if (taken == nullptr) return result;
    const std::string_view stores = taken->stores;
    for (std::size_t i = 0; i < stores.size(); ++i) {
      if (stores[i] == '=') {
        result.zone += text[i];
      } else if (stores[i] == '#') {
        result.field['#'] = number;
      } else if (stores[i] == '0') {
        add_digit(result.field[static_cast<std::size_t>(stores[i - 1])], '0');
      } else if (stores[i] != '_') {
        add_digit(result.field[static_cast<std::size_t>(stores[i])], text[i]);
      }
    }
    text.remove_prefix(stores.size());
    result.state = taken->next;
  }
  result.accepted = true;
  return result;
}

/// Random texts: from pieces, from single characters, and valid ones with a few characters changed.
class Texts {
 public:
  Texts(std::vector<std::string> pieces, std::string alphabet, std::vector<std::string> valid)
      : pieces_(std::move(pieces)), alphabet_(std::move(alphabet)), valid_(std::move(valid)) {}

  std::string next() {
    std::string text;
    switch (below(3)) {
      case 0:
        for (std::size_t count = below(10); count > 0; --count)
          text += pieces_[below(pieces_.size())];
        break;
      case 1:
        text = valid_[below(valid_.size())];
        for (std::size_t count = below(4); count > 0; --count)
          change(text);
        break;
      default:
        for (std::size_t count = below(30); count > 0; --count)
          text += character();
    }
    return text;
  }

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }
  char character() { return alphabet_[below(alphabet_.size())]; }

  void change(std::string &text) {
    const std::size_t at = below(text.size() + 1);
    switch (below(4)) {
      case 0:
        text.insert(at, 1, character());
        break;
      case 1:
        if (at < text.size()) text.erase(at, 1);
        break;
      case 2:
        text.resize(at);
        break;
      default:
        if (at < text.size()) text[at] = character();
    }
  }

  std::mt19937 random_{20261121};
  std::vector<std::string> pieces_;
  std::string alphabet_;
  std::vector<std::string> valid_;
};

/// Hands the text to the function with every character at every place of it.
template <class Function>
void for_every_character_changed(const std::string &usual, Function function) {
  for (std::size_t at = 0; at < usual.size(); ++at) {
    for (int c = 0; c < 256; ++c) {
      std::string written = usual;
      written[at] = static_cast<char>(c);
      function(written);
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
}

}  // namespace model
