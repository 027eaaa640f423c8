// A locale of the tests' own for the length of a scope.
#pragma once

#include <clocale>
#include <cstdlib>

namespace support {

/// Puts all of the process in a locale that the build made for the tests: "en_US.ISO-8859-1" (one byte a
/// character), "tr_TR.ISO-8859-9" (whose i and I are not a pair) or "fr_FR.UTF-8" (long names of days and
/// months).
class Locale {
 public:
  explicit Locale(const char *name) {
    ::setenv("LOCPATH", ZORVCRT_BINARY_DIR "/tests/locales", 1);
    in_force_ = std::setlocale(LC_ALL, name) != nullptr;
  }
  ~Locale() { std::setlocale(LC_ALL, "C"); }
  Locale(const Locale &) = delete;
  Locale &operator=(const Locale &) = delete;

  [[nodiscard]] bool in_force() const { return in_force_; }

 private:
  bool in_force_ = false;
};

}  // namespace support
