// The search order of the settings files, and loading them into a new tree.
#include "zorvrcs_load.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "FileStatus.h"
#include "dataarea.h"
#include "regular_file.hpp"
#include "zorvrcs_export.hpp"
#include "zorvrcs_home.hpp"
#include "zorvrcs_reader.hpp"

namespace zorvcrt::settings {

namespace {

constexpr char kDefaultPath[] = "/usr/local/zorv/sys/conf/quor.conf";
constexpr std::string_view kDataAreaFile = "/conf/sys/quor.conf";
constexpr std::string_view kExtensionFolder = "quor.d";
constexpr std::string_view kExtensionMark = ".conf";
constexpr std::string_view kUserFile = ".ZORVrcs";
constexpr char kDeveloperFallback[] = "./.ZORVrcs";

constexpr char kDeveloperVariable[] = "__KERNEL_DEVELOPER";
constexpr char kHomeSetting[] = "QUOR_HOME";
constexpr std::string_view kExtensionSetting = "QUOR_CONF_DIR";

// The user's file has no say in what is privileged.
constexpr int32_t kUserLevels = QUOR_LEVEL_GROUP | QUOR_LEVEL_NONPRIVILEGED;

// A path that is too long is refused by the system instead of being cut into another one.
using Path = FixedText<PATH_MAX + NAME_MAX + 2>;

UniqueFile open_settings(const char *path) {
  return UniqueFile(std::fopen(path, "re"));
}

bool read_file(const UniqueFile &file, int32_t mask, Tree &tree) {
  if (file != nullptr) read_settings(file.get(), mask, tree);
  return file != nullptr;
}

bool read_file(const char *path, int32_t mask, Tree &tree) {
  return read_file(open_settings(path), mask, tree);
}

void add_home(Tree &tree) {
  const auto home = installation_home();
  if (!home.empty()) add_setting(tree, QUOR_LEVEL_NONPRIVILEGED, kHomeSetting, home.c_str());
}

bool is_absolute(std::string_view path) {
  return path.starts_with('/') || (path.size() >= 2 && (path[1] == ':' || path[0] == '\\'));
}

// Reads the file that a developer of the product has put in the place of all others. False with errno set
// when there is none to read.
bool read_developer_file(const char *path, Tree &tree) {
  if (!is_absolute(path)) {
    errno = EINVAL;
    return false;
  }
  return read_file(path, QUOR_LEVEL_ALL, tree) || read_file(kDeveloperFallback, QUOR_LEVEL_ALL, tree);
}

bool find_data_area_file(Path &path) {
  const bool is_found =
      GetZorvDataArea(path.data(), static_cast<int32_t>(Path::capacity()), ZORV_CHECK_CONF, nullptr, 0) == 0;
  if (!is_found) return false;
  path.terminated_by_callee();
  path.append(kDataAreaFile);
  return true;
}

// Reads the system file and names the extension folder beside it, where there is one.
void read_system_file(const char *settings_path, Tree &tree, Path &extensions) {
  Path path;
  if (!find_data_area_file(path) || !read_file(path.c_str(), QUOR_LEVEL_ALL, tree)) {
    path.assign(settings_path);
    if (!read_file(path.c_str(), QUOR_LEVEL_ALL, tree)) return;
  }
  const std::size_t slash = path.view().find_last_of("/\\");
  path.truncate(slash == std::string_view::npos ? 0 : slash + 1);
  path.append(kExtensionFolder);
  ZfxFileStatus status;
  const bool exists = ZfxStatFile(&status, path.c_str()) == 0;
  if (exists && (status.flags & ZFX_FILE_DIRECTORY) != 0) extensions.assign(path.view());
}

void read_user_file(Tree &tree) {
  const passwd *user = ::getpwuid(::getuid());
  if (user == nullptr || user->pw_dir == nullptr) return;
  Path path(user->pw_dir);
  if (!path.view().ends_with('/')) path.append('/');
  read_file(path.append(kUserFile).c_str(), kUserLevels, tree);
}

// Reads every regular file of the folder that has ".conf" anywhere in its name, so that numbered and dated
// copies count as well.
void read_extensions(std::string_view folder, Tree &tree) {
  const UniqueDirectory directory(::opendir(Path(folder).c_str()));
  if (directory == nullptr) return;
  while (const dirent *entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name.find(kExtensionMark) == std::string_view::npos) continue;
    Path path(folder);
    read_file(open_regular_file(path.append('/').append(name).c_str()), QUOR_LEVEL_ALL, tree);
  }
}

void add_all(const Tree &from, Tree &tree) {
  for (const Section &section : from.sections()) {
    for (const Item *item = section.first(); item != nullptr; item = section.after(*item)) {
      add_setting(tree, section.level(), item->name.get(), item->value.get());
    }
  }
}

}  // namespace

void forget_tree(Settings &settings) {
  const UniqueTree tree(std::exchange(settings.tree, nullptr));
}

void forget_path(Settings &settings) {
  std::free(std::exchange(settings.path, nullptr));
}

int32_t load(Settings &settings) {
  UniqueTree fresh = make_tree();
  if (fresh == nullptr) return 0;
  Tree &tree = *fresh;
  const UniqueTree previous(std::exchange(settings.tree, fresh.release()));

  if (!settings.path_is_explicit) add_home(tree);
  Path extensions;
  if (const char *developer = std::getenv(kDeveloperVariable); developer != nullptr) {
    forget_path(settings);
    if (!read_developer_file(developer, tree)) return QUOR_LOAD_FAILURE;
  } else {
    read_system_file(settings.path != nullptr ? settings.path : kDefaultPath, tree, extensions);
    read_user_file(tree);
  }
  if (extensions.empty()) extensions.assign(view_of(tree.find(kExtensionSetting, QUOR_LEVEL_PRIVILEGED)));
  if (!extensions.empty()) read_extensions(extensions.view(), tree);
  if (previous != nullptr) add_all(*previous, tree);
  return 0;
}

}  // namespace zorvcrt::settings
