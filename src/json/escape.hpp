// The escape rule of string values.
#pragma once

#include <cstddef>
#include <string_view>

namespace zorvcrt {

/// By how much escaping makes a text longer.
struct EscapeGrowth {
  std::size_t counted;  ///< what the contract reports; 0 when the text stays as it is
  std::size_t written;  ///< the counted characters and the quotes that had a backslash already
};

EscapeGrowth escape_growth(std::string_view text);

/// Writes the text escaped, text.size() + written bytes, without a terminator; returns the end.
char *write_escaped(std::string_view text, char *out);

}  // namespace zorvcrt
