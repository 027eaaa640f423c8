/* The file-status record as a C program sees it. */
#include "FileStatus.h"

/* The size that a C caller gets for a path, or -1. */
int64_t size_seen_from_c(const char *path);

int64_t size_seen_from_c(const char *path) {
  ZfxFileStatus status;
  return ZfxStatFile(&status, path) == 0 ? status.size : -1;
}
