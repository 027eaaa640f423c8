// Finding the first position at which two texts differ, sixteen bytes at a time, with case or without.
#pragma once

#include <cstddef>

namespace zorvcrt {

/// How many leading bytes of @p a and @p b agree, up to @p count.
std::size_t matching_bytes(const char *a, const char *b, std::size_t count);

/// How many leading bytes agree when both sides are mapped through @p upper, the upper-case table of a locale
/// (indexed by the byte as an unsigned number), up to @p count.
std::size_t matching_bytes_without_case(const char *a, const char *b, std::size_t count, const int *upper);

}  // namespace zorvcrt
