// The escaping of strings for a place between double quotes.
#include "zjson_util.h"

#include <algorithm>
#include <cstdlib>

#include "escape.hpp"
#include "fixed_text.hpp"

namespace zorvcrt {

namespace {

// The letter behind the backslash for a character that must not stand in a string, else 0. A quote is told
// apart by the caller.
constexpr char escape_letter(char c) {
  switch (c) {
    case '\b':
      return 'b';
    case '\t':
      return 't';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    default:
      return '\0';
  }
}

}  // namespace

EscapeGrowth escape_growth(std::string_view text) {
  EscapeGrowth growth = {0, 0};
  char previous = '\0';
  for (const char c : text) {
    const bool escaped = c == '"' || escape_letter(c) != '\0';
    growth.written += escaped ? 1 : 0;
    growth.counted += escaped && !(c == '"' && previous == '\\') ? 1 : 0;
    previous = c;
  }
  return growth;
}

char *write_escaped(std::string_view text, char *out) {
  for (const char c : text) {
    const char letter = c == '"' ? '"' : escape_letter(c);
    if (letter != '\0') *out++ = '\\';
    *out++ = letter == '\0' ? c : letter;
  }
  return out;
}

}  // namespace zorvcrt

char *zjson_str_escape(const char *text, uint32_t *length) {
  if (text == nullptr) return nullptr;
  const std::string_view view = zorvcrt::view_of(text);
  const zorvcrt::EscapeGrowth growth = zorvcrt::escape_growth(view);
  if (growth.counted == 0) return nullptr;
  // The length of the caller is what the report starts from; the block has room for what is written as well.
  const std::size_t counted = (length == nullptr ? view.size() : *length) + growth.counted;
  const std::size_t written = view.size() + growth.written;
  auto *escaped = static_cast<char *>(std::calloc(1, std::max(counted, written) + 1));
  if (escaped == nullptr) return nullptr;
  zorvcrt::write_escaped(view, escaped);
  if (length != nullptr) *length = static_cast<uint32_t>(counted);
  return escaped;
}
