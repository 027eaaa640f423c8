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
  // A value that cannot be formatted leaves what stands in front of it, terminated.
  std::vsnprintf(buffer, static_cast<std::size_t>(size), format, arguments);
  va_end(arguments);
  return buffer;
}
