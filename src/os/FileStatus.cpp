// The portable file-status record over stat().
#include "FileStatus.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr mode_t kExecutableForOwnerOrOthers = S_IXUSR | S_IXOTH;

uint32_t kind_of(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFDIR:
      return ZFX_FILE_DIRECTORY;
    case S_IFREG:
      return ZFX_FILE_REGULAR;
    case S_IFCHR:
    case S_IFBLK:
      return ZFX_FILE_DEVICE;
    case S_IFIFO:
    case S_IFSOCK:
      return ZFX_FILE_PIPE;
    default:
      return 0;
  }
}

}  // namespace

int32_t ZfxStatFile(ZfxFileStatus *status, const char *path) {
  if (status == nullptr) return -1;
  std::memset(status, 0, sizeof *status);  // the bytes between the fields too: callers compare records
  if (path == nullptr) return -1;
  struct stat found;
  if (::stat(path, &found) != 0) return errno;
  status->flags = kind_of(found.st_mode);
  if ((found.st_mode & kExecutableForOwnerOrOthers) != 0) status->flags |= ZFX_FILE_EXECUTABLE;
  status->change_time = found.st_ctime;
  status->modification_time = found.st_mtime;
  status->access_time = found.st_atime;
  status->size = found.st_size;
  return 0;
}
