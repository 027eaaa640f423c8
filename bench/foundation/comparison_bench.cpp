// Comparison without case of texts that differ in the case of every letter, in the locale that a process
// starts with and in one with UTF-8.
#include <strings.h>

#include <cctype>
#include <clocale>
#include <string>

#include "CompareString.h"
#include "contender.hpp"

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_ABSL
#include <absl/strings/match.h>
#endif

namespace {

constexpr char kWork[] = "comparison";

class LocaleGuard {
 public:
  explicit LocaleGuard(const char *name) { std::setlocale(LC_ALL, name); }
  ~LocaleGuard() { std::setlocale(LC_ALL, "C"); }
  LocaleGuard(const LocaleGuard &) = delete;
  LocaleGuard &operator=(const LocaleGuard &) = delete;
};

int compare_by_character(const char *a, const char *b) {
  while (*a != '\0' &&
         std::toupper(static_cast<unsigned char>(*a)) == std::toupper(static_cast<unsigned char>(*b))) {
    ++a, ++b;
  }
  return std::toupper(static_cast<unsigned char>(*a)) - std::toupper(static_cast<unsigned char>(*b));
}

void add(const std::string &input, std::size_t length, const char *locale) {
  const auto by = [&](const char *name, auto compare) {
    bench::contender(kWork, input, name, [=](benchmark::State &state) {
      const LocaleGuard guard(locale);
      const std::string lower(length, 'q');
      const std::string upper(length, 'Q');
      if (compare(lower.c_str(), upper.c_str()) != 0) state.SkipWithError("wrong result");
      for (auto _ : state) {
        benchmark::DoNotOptimize(compare(lower.c_str(), upper.c_str()));
        benchmark::ClobberMemory();
      }
    });
  };
  by(bench::kOwn, [](const char *a, const char *b) { return ZfxCompareNoCase(a, b); });
  by("strcasecmp", [](const char *a, const char *b) { return ::strcasecmp(a, b); });
  by("toupper each character", compare_by_character);
#ifdef HAVE_GLIB
  by("GLib", [](const char *a, const char *b) { return g_ascii_strcasecmp(a, b); });
#endif
#ifdef HAVE_ABSL
  by("Abseil", [](const char *a, const char *b) { return absl::EqualsIgnoreCase(a, b) ? 0 : 1; });
#endif
}

[[maybe_unused]] const bool added = [] {
  for (const std::size_t length : {16U, 64U, 256U}) {
    add(std::to_string(length) + " bytes", length, "C");
    add(std::to_string(length) + " bytes, UTF-8 locale", length, "C.UTF-8");
  }
  return true;
}();

}  // namespace
