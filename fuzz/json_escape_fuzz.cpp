// The escaping of JSON strings against the rule said again, with the length that is reported.
#include <cstring>

#include "check.hpp"
#include "input.hpp"
#include "zfxmemory.h"
#include "zjson_util.h"

namespace {

constexpr char kEscaped[] = "\b\t\n\r\"";
constexpr char kLetters[] = "btnr\"";

bool needs_escape(const std::string &text, std::size_t i) {
  if (text[i] == '"') return i == 0 || text[i - 1] != '\\';
  return std::strchr("\b\t\n\r", text[i]) != nullptr;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string text = fuzz::c_text({reinterpret_cast<const char *>(data), size});
  std::string expected;
  std::size_t needed = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char *place = std::strchr(kEscaped, text[i]);
    if (place != nullptr) expected += '\\';
    expected += place != nullptr ? kLetters[place - kEscaped] : text[i];
    if (needs_escape(text, i)) ++needed;
  }

  auto length = static_cast<uint32_t>(text.size());
  const auto copy = fuzz::exact_copy(text.c_str(), text.size() + 1);
  char *escaped = zjson_str_escape(copy.get(), &length);
  fuzz::check_equal(escaped != nullptr, needed > 0, "whether there is a new text");
  fuzz::check_equal(std::size_t{length}, text.size() + needed, "length that is reported");
  if (escaped != nullptr) fuzz::check_equal(std::string(escaped), expected, "escaped text");
  ZfxMemFree(escaped);
  return 0;
}
