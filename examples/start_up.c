/* What a host does first: ask its settings, open its log, write a line. */
#include <stdio.h>
#include <zorvcrt.h>

#define HERE ZfxGetSourceLocation(__func__, __FILE__, __LINE__)

int main(int argc, char **argv) {
  char folder[1024], path[4096];
  const char *site = QuorConfQuery("SITE_NAME", QUOR_LEVEL_ALL); /* the first question loads the settings */
  const char *log = QuorConfQuery("QUOR_LOG", QUOR_LEVEL_ALL);
  snprintf(folder, sizeof folder, "%s", argc > 1 ? argv[1] : log ? log : "/tmp");
  getLogFileName(path, folder, "start_up", NULL, 0, 0); /* takes a '/' at the end off our copy */

  Logger *logger = Logger_New(LOGGER_LEVEL_INFO, path, 0);
  if (Logger_GetLogFileno(logger) < 0) {
    fprintf(stderr, "cannot write to %s\n", path);
    return 1;
  }
  Logger_LogInfo(logger, HERE, "%s is up", site ? site : "a nameless site");
  Logger_Delete(logger);
  printf("logged to %s\n", path);
  return 0;
}
