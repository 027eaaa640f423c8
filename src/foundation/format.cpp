// A printf into a bounded area.
#include "format.h"

#include <cstdarg>
#include <cstdio>

char *string_format(char *buffer, int32_t size, const char *format, ...) {
  if (buffer == nullptr || size < 1) return buffer;
  *buffer = '\0';
  if (format == nullptr) return buffer;
  va_list arguments;
  va_start(arguments, format);
  if (std::vsnprintf(buffer, static_cast<std::size_t>(size), format, arguments) < 0) *buffer = '\0';
  va_end(arguments);
  return buffer;
}
