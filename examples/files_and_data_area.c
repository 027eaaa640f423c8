/* Make a directory path, read a commented file, query its status and look for the data area. */
#include <stdio.h>
#include <string.h>
#include <zorvcrt.h>

static int read_hosts(const char *path) {
  char line[256];
  FILE *file = fopen(path, "r");
  if (file == NULL) return 1;
  while (GetFileLine(line, sizeof line, file) != NULL)
    printf("host: %s\n", line);
  return fclose(file);
}

int main(int count, char **arguments) {
  char path[1024], message[512];
  ZfxFileStatus status;
  int32_t error;
  FILE *file;

  if (count < 2) return 2;
  snprintf(path, sizeof path, "%s/site\\conf", arguments[1]); /* both separators make the same path */
  if ((error = CreatePath(path)) != 0) {
    fprintf(stderr, "%s: %s\n", path, strerror(error));
    return 1;
  }

  snprintf(path, sizeof path, "%s/site/conf/hosts", arguments[1]);
  if ((file = fopen(path, "w")) == NULL) return 1;
  fputs("# who may connect\n\n  alpha \nbeta\n", file);
  if (fclose(file) != 0 || read_hosts(path) != 0) return 1;

  if (ZfxStatFile(&status, path) == 0 && (status.flags & ZFX_FILE_REGULAR) != 0)
    printf("%lld bytes\n", (long long)status.size);

  if (GetZorvDataArea(path, sizeof path, ZORV_CHECK_CONF | ZORV_CHECK_LOG, message, sizeof message) == 0)
    fprintf(stderr, "data area: %s\n", path);
  else
    fprintf(stderr, "%s\n", message); /* "The ZORV data area is not configured" on a bare machine */
  return 0;
}
