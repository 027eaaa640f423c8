// The comparison family: two engines, one for counted and one for terminated texts, and the exported
// wrappers.
#include "CompareString.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "CompareString_blocks.hpp"
#include "fixed_text.hpp"

namespace {

using zorvcrt::matching_bytes;
using zorvcrt::matching_bytes_without_case;

enum class Case { kSensitive, kIgnored };

// The upper-case table of the locale in force, as toupper() reads it.
const int *upper_table() {
  return *__ctype_toupper_loc();
}

std::size_t matching(std::string_view a, std::string_view b, Case letters) {
  const std::size_t common = std::min(a.size(), b.size());
  return letters == Case::kIgnored ? matching_bytes_without_case(a.data(), b.data(), common, upper_table())
                                   : matching_bytes(a.data(), b.data(), common);
}

signed char ordered_value(char c, Case letters) {
  return static_cast<signed char>(letters == Case::kIgnored ? upper_table()[static_cast<unsigned char>(c)]
                                                            : c);
}

// Orders counted texts; when all common positions agree, the shorter one is the lower.
int __ZfxCompare(std::string_view a, std::string_view b, Case letters) {
  const std::size_t at = matching(a, b, letters);
  if (at == a.size() || at == b.size()) return (a.size() > b.size()) - (a.size() < b.size());
  return ordered_value(a[at], letters) < ordered_value(b[at], letters) ? -1 : 1;
}

std::string_view beginning(const char *text, int32_t limit) {
  return limit > 0 ? std::string_view(text, ::strnlen(text, static_cast<std::size_t>(limit))) : text;
}

// Tells whether terminated texts are the same over limit bytes, or wholly when limit is 0 or less.
bool __ZfxCompareEx(const char *a, const char *b, int32_t limit, Case letters) {
  if (a == nullptr || b == nullptr) return a == b;
  const std::string_view x = beginning(a, limit);
  const std::string_view y = beginning(b, limit);
  return x.size() == y.size() && matching(x, y, letters) == x.size();
}

int compare_beginnings(const char *a, const char *b, int32_t n, Case letters) {
  if (a == nullptr || b == nullptr || n <= 0) return 0;
  const std::size_t limit = ::strnlen(a, static_cast<std::size_t>(n));
  const std::size_t common = ::strnlen(b, limit);
  return __ZfxCompare({a, common}, {b, common}, letters);
}

}  // namespace

int32_t ZfxCompareNoCase(const char *a, const char *b) {
  return __ZfxCompare(zorvcrt::view_of(a), zorvcrt::view_of(b), Case::kIgnored);
}

int32_t ZfxCompareLenNoCase(const char *a, const char *b, int32_t n) {
  return compare_beginnings(a, b, n, Case::kIgnored);
}

int32_t ZfxCompareLen(const char *a, const char *b, int32_t n) {
  return compare_beginnings(a, b, n, Case::kSensitive);
}

int32_t ZfxStrEquals(const char *a, const char *b) {
  return __ZfxCompareEx(a, b, 0, Case::kSensitive) ? 1 : 0;
}

int32_t ZfxStrNoCaseEquals(const char *a, const char *b) {
  return __ZfxCompareEx(a, b, 0, Case::kIgnored) ? 1 : 0;
}

int32_t ZfxStrLenEquals(const char *a, const char *b, int32_t n) {
  return __ZfxCompareEx(a, b, n, Case::kSensitive) ? 1 : 0;
}

int32_t ZfxStrLenNoCaseEquals(const char *a, const char *b, int32_t n) {
  return __ZfxCompareEx(a, b, n, Case::kIgnored) ? 1 : 0;
}
