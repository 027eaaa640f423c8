// The calling thread's errno as a number.
#include "GetErrorNumber.h"

#include <cerrno>

uint32_t ZfxGetErrorNumber(void) {
  return static_cast<uint32_t>(errno);
}
