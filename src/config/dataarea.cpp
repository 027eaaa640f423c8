// The data area: where "/usr/local/zorv/var" leads, and whether all that belongs there is there.
#include "dataarea.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

#include "FileStatus.h"
#include "fixed_text.hpp"

namespace {

using zorvcrt::FixedText;

constexpr char kEntry[] = "/usr/local/zorv/var";
constexpr std::string_view kEntryFolder = "/usr/local/zorv/";
constexpr std::size_t kLinkTargetArea = 1024;
constexpr std::size_t kPathArea = 1024;

// Room for every link target behind the folder of the link.
using DataArea = FixedText<kEntryFolder.size() + kLinkTargetArea>;
using PathInside = FixedText<kPathArea>;
using Message = FixedText<2 * kPathArea>;

struct DirectoryCheck {
  uint32_t bit;
  std::string_view name;
};

// In the order of checking.
constexpr DirectoryCheck kDirectoryChecks[] = {
    {ZORV_CHECK_CONF, "conf/sys"}, {ZORV_CHECK_COF, "conf/cof"}, {ZORV_CHECK_LOG, "log"},
    {ZORV_CHECK_DB, "db"},         {ZORV_CHECK_CTL, "ctl"},
};

constexpr std::string_view kControlFiles[] = {"CONTROL.BAF", "CONTROL.BIF"};

bool has_kind(const ZfxFileStatus &status, uint32_t kind) {
  return (status.flags & kind) != 0;
}

// Finds the directory; false when the data area is not configured.
bool locate(DataArea &area) {
  ZfxFileStatus status;
  if (ZfxStatFile(&status, kEntry) != 0) return false;
  FixedText<kLinkTargetArea> target;
  const ssize_t length = ::readlink(kEntry, target.data(), FixedText<kLinkTargetArea>::capacity());
  if (length <= 0) {
    area.assign(kEntry);
    return has_kind(status, ZFX_FILE_DIRECTORY);
  }
  target.set_size(static_cast<std::size_t>(length));
  if (target.view().front() != '/') area.assign(kEntryFolder);
  area.append(target.view());
  return ZfxStatFile(&status, area.c_str()) == 0;
}

PathInside path_inside(const DataArea &area, std::string_view folder, std::string_view name = {}) {
  PathInside path(area.view());
  path.append('/').append(folder);
  if (!name.empty()) path.append('/').append(name);
  return path;
}

int32_t check_area(const DataArea &area, Message &message) {
  ZfxFileStatus status;
  if (const int32_t error = ZfxStatFile(&status, area.c_str()); error != 0) {
    message.assign("The ZORV data area does not exist: ").append(area.view());
    return error;
  }
  if (!has_kind(status, ZFX_FILE_DIRECTORY)) {
    message.assign("The ZORV data area is not a directory: ").append(area.view());
    return ZORV_DATA_AREA_NOT_A_DIRECTORY;
  }
  return ZORV_DATA_AREA_OK;
}

int32_t check_directory(const DataArea &area, std::string_view name, Message &message) {
  const PathInside path = path_inside(area, name);
  ZfxFileStatus status;
  const bool exists = ZfxStatFile(&status, path.c_str()) == 0;
  if (exists && has_kind(status, ZFX_FILE_DIRECTORY)) return ZORV_DATA_AREA_OK;
  message.assign("The ").append(name).append(" directory in the ZORV data area ");
  message.append(exists ? "is not a directory: " : "does not exist: ").append(path.view());
  return ZORV_DATA_AREA_NOT_A_DIRECTORY;
}

int32_t check_control_file(const DataArea &area, std::string_view name, Message &message) {
  const PathInside path = path_inside(area, "ctl", name);
  ZfxFileStatus status;
  if (ZfxStatFile(&status, path.c_str()) == 0 && has_kind(status, ZFX_FILE_REGULAR)) return ZORV_DATA_AREA_OK;
  message.assign("The ").append(name).append(" file was not found at ").append(path.view());
  return ZORV_DATA_AREA_NOT_CONFIGURED;
}

int32_t check_content(const DataArea &area, uint32_t checks, Message &message) {
  int32_t result = check_area(area, message);
  for (const DirectoryCheck &check : kDirectoryChecks) {
    if (result == 0 && (checks & check.bit) != 0) result = check_directory(area, check.name, message);
  }
  for (const std::string_view name : kControlFiles) {
    if (result == 0 && (checks & ZORV_CHECK_CTL) != 0) result = check_control_file(area, name, message);
  }
  return result;
}

}  // namespace

int32_t GetZorvDataArea(char *path, int32_t path_size, uint32_t checks, char *message, int32_t message_size) {
  DataArea area;
  Message text;
  int32_t result = ZORV_DATA_AREA_OK;
  if (!locate(area)) {
    text.assign("The ZORV data area is not configured");
    result = ZORV_DATA_AREA_NOT_CONFIGURED;
  } else if (checks != 0) {
    result = check_content(area, checks, text);
    if (result == ZORV_DATA_AREA_OK) zorvcrt::copy_text(path, path_size, area.view());
  }
  zorvcrt::copy_text(message, message_size, text.view());
  return result;
}
