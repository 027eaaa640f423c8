/* The file-status record as a C program sees it: the layout is pinned, for callers compiled long ago. */
#include <stddef.h>

#include "FileStatus.h"

_Static_assert(offsetof(ZfxFileStatus, flags) == 0, "flags");
_Static_assert(offsetof(ZfxFileStatus, change_time) == 8, "change_time");
_Static_assert(offsetof(ZfxFileStatus, modification_time) == 16, "modification_time");
_Static_assert(offsetof(ZfxFileStatus, access_time) == 24, "access_time");
_Static_assert(offsetof(ZfxFileStatus, size) == 32, "size");
_Static_assert(sizeof(ZfxFileStatus) == 40, "record");

/* The size that a C caller gets for a path, or -1. */
int64_t size_seen_from_c(const char *path);

int64_t size_seen_from_c(const char *path) {
  ZfxFileStatus status;
  return ZfxStatFile(&status, path) == 0 ? status.size : -1;
}
