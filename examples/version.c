/* The smallest host: asks the library for its version. */
#include <stdio.h>
#include <zorvcrt.h>

int main(void) {
  char version[32];
  ZfxGetCrtVersion(version, sizeof version);
  printf("zorvcrt %s\n", version);
  return 0;
}
