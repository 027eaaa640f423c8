// The comparison family: two engines, one that orders texts and one that finds them equal, and the exported
// wrappers.
#include "CompareString.h"

#include <algorithm>
#include <cstring>

#include "CompareString_kernels.hpp"

namespace {

using zorvcrt::Outcome;

enum class Case { kSensitive, kIgnored };

// Orders terminated texts; when all common positions agree, the shorter one is the lower.
int __ZfxCompare(const char *a, const char *b) {
  return static_cast<int>(zorvcrt::compare(a, b));
}

// Tells whether terminated texts are the same over limit bytes, or wholly when limit is 0 or less.
bool __ZfxCompareEx(const char *a, const char *b, int32_t limit, Case letters) {
  if (a == nullptr || b == nullptr) return a == b;
  const auto counted = static_cast<std::size_t>(limit);
  if (letters == Case::kSensitive) return (limit > 0 ? std::strncmp(a, b, counted) : std::strcmp(a, b)) == 0;
  return (limit > 0 ? zorvcrt::compare_beginnings(a, b, counted) : zorvcrt::compare(a, b)) == Outcome::kSame;
}

bool has_nothing_to_compare(const char *a, const char *b, int32_t n) {
  return a == nullptr || b == nullptr || n <= 0;
}

// The bytes that both texts have, at most n.
std::size_t common_size(const char *a, const char *b, int32_t n) {
  return ::strnlen(b, ::strnlen(a, static_cast<std::size_t>(n)));
}

}  // namespace

int32_t ZfxCompareNoCase(const char *a, const char *b) {
  return __ZfxCompare(a == nullptr ? "" : a, b == nullptr ? "" : b);
}

int32_t ZfxCompareLenNoCase(const char *a, const char *b, int32_t n) {
  if (has_nothing_to_compare(a, b, n)) return 0;
  if (zorvcrt::compare_beginnings(a, b, static_cast<std::size_t>(n)) == Outcome::kSame) return 0;
  const std::size_t common = common_size(a, b, n);
  return common == 0 ? 0 : static_cast<int32_t>(zorvcrt::compare_beginnings(a, b, common));
}

int32_t ZfxCompareLen(const char *a, const char *b, int32_t n) {
  if (has_nothing_to_compare(a, b, n)) return 0;
  const std::size_t common = common_size(a, b, n);
  if (std::memcmp(a, b, common) == 0) return 0;
  const auto [x, y] = std::mismatch(a, a + common, b);
  return static_cast<signed char>(*x) < static_cast<signed char>(*y) ? -1 : 1;
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
