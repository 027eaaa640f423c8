#include <stdio.h>
#include <zorvcrt.h>

int main(int argc, char **argv) {
  char path[4096];
  const char *block_size = QuorConfQuery("QUOR_BLOCK_SIZE", QUOR_LEVEL_ALL);
  getLogFileName(path, argc > 1 ? argv[1] : NULL, "host", NULL, 0, 0);
  Logger *logger = Logger_New(LOGGER_LEVEL_INFO, path, 0);
  Logger_LogInfo(logger, ZfxGetSourceLocation(__func__, __FILE__, __LINE__), "up, blocks of %s", block_size);
  Logger_Delete(logger);
  printf("logged to %s\n", path);
  return 0;
}
