// The host's name in an area that is always terminated, which gethostname() leaves open when it cuts.
#include "GetComputerName.h"

#include <unistd.h>

#include <cstddef>
#include <cstring>

int32_t ZfxGetComputerName(char *buffer, int32_t *size) {
  int32_t length = 0;
  if (buffer != nullptr && size != nullptr && *size > 0) {
    const auto capacity = static_cast<std::size_t>(*size);
    buffer[0] = '\0';
    ::gethostname(buffer, capacity);
    buffer[capacity - 1] = '\0';
    length = static_cast<int32_t>(std::strlen(buffer));
  }
  if (size != nullptr) *size = length;
  return length;
}
