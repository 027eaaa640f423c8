// The comparison family: two engines, one for counted and one for terminated texts, and the exported
// wrappers.
#include "CompareString.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "fixed_text.hpp"

namespace {

enum class Case { kSensitive, kIgnored };

// The order of two bytes: -1, 0 or 1. Equal bytes, the usual case, never reach the locale's table.
int order_of(char a, char b, Case letters) {
  if (a == b) return 0;
  auto x = static_cast<signed char>(a);
  auto y = static_cast<signed char>(b);
  if (letters == Case::kIgnored) {
    x = static_cast<signed char>(std::toupper(static_cast<unsigned char>(a)));
    y = static_cast<signed char>(std::toupper(static_cast<unsigned char>(b)));
  }
  return (x > y) - (x < y);
}

// Orders counted texts; when all common positions agree, the shorter one is the lower.
int __ZfxCompare(std::string_view a, std::string_view b, Case letters) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (const int order = order_of(a[i], b[i], letters); order != 0) return order;
  }
  return (a.size() > b.size()) - (a.size() < b.size());
}

// Tells whether terminated texts are the same over limit bytes, or wholly when limit is 0 or less.
bool __ZfxCompareEx(const char *a, const char *b, int32_t limit, Case letters) {
  if (a == nullptr || b == nullptr) return a == b;
  for (std::size_t i = 0; limit <= 0 || i < static_cast<std::size_t>(limit); ++i) {
    if (a[i] == '\0' || b[i] == '\0') return a[i] == b[i];
    if (order_of(a[i], b[i], letters) != 0) return false;
  }
  return true;
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
