/* Lines of several levels into a file and then through a callback. */
#include <errno.h>
#include <stdio.h>
#include <zorvcrt.h>

#define HERE ZfxGetSourceLocation(__func__, __FILE__, __LINE__)

/* A line begins with "[Sun Nov 15 08:38:12 "; what comes behind the time is the same in every run. */
static void show_without_time(void *stream, const char *line) {
  fprintf(stream, "[%s", line + 21);
}

int main(int argc, char **argv) {
  char *path = getLogFileName(NULL, argc > 1 ? argv[1] : "/tmp", "server", NULL, 0, 0);
  Logger *logger = Logger_New(LOGGER_LEVEL_INFO, path, 0);
  printf("logging to %s\n", path);
  ZfxMemFree(path);
  Logger_LogInfo(logger, HERE, "listening on port %d", 3050);

  Logger_SetCallback(logger, show_without_time, stdout);
  Logger_LogWarning(logger, HERE, 0, "%d clients", 500);
  if (fopen("/no/such/file", "r") == NULL) Logger_LogSystemError(logger, HERE, errno, 1);
  Logger_LogDebug(logger, HERE, "not written: the logger's level is 4");
  Logger_Delete(logger);
  return 0;
}
