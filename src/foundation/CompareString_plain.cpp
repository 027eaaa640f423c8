// The comparison of two texts without regard to case for any machine, a byte at a time.
#include <cstring>

#include "CompareString_kernels.hpp"

namespace zorvcrt {

namespace {

Outcome compared(const char *a, std::size_t a_size, const char *b, std::size_t b_size) {
  return outcome_from(0, a, a_size, b, b_size, upper_case_table(),
                      [](std::size_t /*position*/, std::size_t /*left*/) -> std::size_t { return 0; });
}

}  // namespace

Outcome compare_plain(const char *a, const char *b) {
  return compared(a, std::strlen(a), b, std::strlen(b));
}

Outcome compare_beginnings_plain(const char *a, const char *b, std::size_t limit) {
  return compared(a, ::strnlen(a, limit), b, ::strnlen(b, limit));
}

}  // namespace zorvcrt
