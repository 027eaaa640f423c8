// The comparisons of texts against loops over signed bytes.
#include <cctype>
#include <climits>

#include "CompareString.h"
#include "check.hpp"
#include "input.hpp"

namespace {

// The text with its bytes as the order sees them: signed, and in upper case when case does not count.
std::string key(const std::string &text, std::size_t limit, bool nocase) {
  std::string mapped = text.substr(0, limit);
  for (char &c : mapped) {
    const auto byte = static_cast<unsigned char>(c);
    c = static_cast<char>((nocase ? std::toupper(byte) : byte) ^
                          0x80);  // as unsigned bytes, 0x80 comes first
  }
  return mapped;
}

int32_t order(const std::string &a, const std::string &b) {
  const int result = a.compare(b);
  return (result > 0) - (result < 0);
}

void check_length(const char *a_text, const char *b_text, const std::string &a, const std::string &b,
                  int32_t n) {
  const std::size_t shared = std::min({n < 0 ? 0 : static_cast<std::size_t>(n), a.size(), b.size()});
  fuzz::check_equal(ZfxCompareLen(a_text, b_text, n), order(key(a, shared, false), key(b, shared, false)),
                    "order over a length");
  fuzz::check_equal(ZfxCompareLenNoCase(a_text, b_text, n), order(key(a, shared, true), key(b, shared, true)),
                    "order over a length without case");
  const std::size_t limit = n > 0 ? static_cast<std::size_t>(n) : std::string::npos;
  fuzz::check_equal(ZfxStrLenEquals(a_text, b_text, n) != 0, key(a, limit, false) == key(b, limit, false),
                    "equality over a length");
  fuzz::check_equal(ZfxStrLenNoCaseEquals(a_text, b_text, n) != 0, key(a, limit, true) == key(b, limit, true),
                    "equality over a length without case");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int32_t lengths[] = {INT_MIN, -1, 0, input.byte(), INT_MAX};
  // Up to 63 bytes ahead of the texts, so that they begin anywhere in a register's width or a page.
  const std::string padding(input.byte() % 64U, '#');
  const std::string a = fuzz::c_text(input.line());
  const std::string b = fuzz::c_text(input.rest());
  const auto a_block = fuzz::exact_copy((padding + a).c_str(), padding.size() + a.size() + 1);
  const auto b_block = fuzz::exact_copy(b.c_str(), b.size() + 1);
  const char *a_text = a_block.get() + padding.size();
  const char *b_text = b_block.get();

  const std::size_t all = std::string::npos;
  fuzz::check_equal(ZfxCompareNoCase(a_text, b_text), order(key(a, all, true), key(b, all, true)),
                    "order without case");
  fuzz::check_equal(ZfxStrEquals(a_text, b_text) != 0, a == b, "equality");
  fuzz::check_equal(ZfxStrNoCaseEquals(a_text, b_text) != 0, key(a, all, true) == key(b, all, true),
                    "equality without case");
  for (const int32_t n : lengths) {
    check_length(a_text, b_text, a, b, n);
  }
  return 0;
}
