// The system's message for an error number.
#include "GetErrorText.h"

#include <array>
#include <cerrno>
#include <cstring>

#include "fixed_text.hpp"

namespace {

constexpr int32_t kCurrentErrno = -1;

// The C library writes here only the text of a number that it does not know.
constexpr std::size_t kUnknownErrorRoom = 128;

}  // namespace

int32_t ZfxGetErrorText(int32_t error, char *buffer, int32_t size) {
  std::array<char, kUnknownErrorRoom> unknown;
  const int number = error == kCurrentErrno ? errno : error;
  const char *text = strerror_r(number, unknown.data(), unknown.size());
  return static_cast<int32_t>(zorvcrt::copy_text(buffer, size, text));
}
