// The place of access rights.
#include "security.h"

int32_t ZfxAddAccessRights(const void * /*object*/, ...) {
  return 0;
}
