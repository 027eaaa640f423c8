// Comparisons for fuzz targets: one that fails prints both values and stops the program where a fuzzer sees
// it.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

namespace fuzz {

/// A value as it can stand in a message: texts in quotes with all but plain characters as "\x0A", lists in
/// brackets.
template <class Value>
std::string shown(const Value &value) {
  std::string text;
  char part[64];
  if constexpr (std::is_convertible_v<const Value &, std::string_view>) {
    for (const char c : std::string_view(value)) {
      const bool plain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
      std::snprintf(part, sizeof part, plain ? "%c" : "\\x%02X", static_cast<unsigned char>(c));
      text += part;
    }
    return '"' + text + '"';
  } else if constexpr (std::is_floating_point_v<Value>) {
    std::snprintf(part, sizeof part, "%.20g (%a)", value, value);
    return part;
  } else if constexpr (std::is_arithmetic_v<Value>) {
    return std::to_string(value);
  } else {
    for (const auto &item : value) {
      text += (text.empty() ? "" : ", ") + shown(item);
    }
    return '[' + text + ']';
  }
}

[[noreturn]] inline void fail(const std::string &message) {
  std::fprintf(stderr, "fuzz target: %s\n", message.c_str());
  __builtin_trap();
}

inline void check(bool holds, std::string_view rule) {
  if (!holds) fail("does not hold: " + std::string(rule));
}

template <class Got, class Expected>
void check_equal(const Got &got, const Expected &expected, std::string_view what) {
  if (got == expected) return;
  fail(std::string(what) + "\n  got      " + shown(got) + "\n  expected " + shown(expected));
}

}  // namespace fuzz
