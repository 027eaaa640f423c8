/* Writes a settings file, points the library at it, and asks what a host would ask. */
#include <stdio.h>
#include <stdlib.h>
#include <zorvcrt.h>

static const char kSettings[] =
    "# Lines before the first header are for everybody.\n"
    "SAMPLE_ROOT=/srv/sample\n"
    "SAMPLE_DATA=${SAMPLE_ROOT}/data\n"
    "SAMPLE_PORT=7800           # a user may choose another\n"
    "[PRIVILEGED]\n"
    "SAMPLE_AUDIT=yes           # a user may not\n";

static void ask(const char *name, int32_t levels, const char *asked) {
  const char *value = QuorConfQuery(name, levels);
  printf("%-13s %-14s %s\n", name, asked, value ? value : "-");
}

int main(int argc, char **argv) {
  char path[4096];
  snprintf(path, sizeof path, "%s/quor.conf", argc > 1 ? argv[1] : "/tmp");
  FILE *file = fopen(path, "w");
  if (file == NULL || fputs(kSettings, file) < 0 || fclose(file) != 0) return 1;
  setenv("__KERNEL_DEVELOPER", path, 1); /* this file instead of the installation's and the user's */
  if (!QuorConfExists()) {               /* loads; every other function would end the process on failure */
    perror(path);
    return 1;
  }
  ask("SAMPLE_DATA", QUOR_LEVEL_ALL, "all levels");
  ask("SAMPLE_AUDIT", QUOR_LEVEL_PRIVILEGED, "privileged");
  ask("SAMPLE_AUDIT", QUOR_LEVEL_NONPRIVILEGED, "nonprivileged"); /* its copy in the environment */

  setenv("SAMPLE_PORT", "9000", 1); /* as whoever starts the host could have done */
  setenv("SAMPLE_AUDIT", "no", 1);
  ask("SAMPLE_PORT", QUOR_LEVEL_ALL, "all levels");
  ask("SAMPLE_AUDIT", QUOR_LEVEL_PRIVILEGED, "privileged");

  int32_t level;
  const char *name, *value;
  QuorConfStart();
  while ((name = QuorConfNext(&level, &value)) != NULL && level == QUOR_LEVEL_PRIVILEGED)
    printf("level %d holds %s=%s\n", (int)level, name, value);
  QuorConfRemove();
  return 0;
}
