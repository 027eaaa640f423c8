// QUOR_HOME, found by way of links: the main library's, or the one that names the running program.
#include "zorvrcs_home.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string_view>

#include "handles.hpp"

namespace zorvcrt::settings {

namespace {

constexpr char kLibraryLink[] = "/usr/local/zorv/sys/lib/libquor.so";
constexpr char kSystemLibraryLink[] = "/usr/lib/libquor.so";
constexpr char kProgramLink[] = "/proc/self/exe";
constexpr char kProgramVariable[] = "_";
constexpr std::size_t kProgramVariableSize = 1024;
constexpr std::size_t kTargetSize = 2048;

using Target = FixedText<kTargetSize>;
using Folder = FixedText<kHomeSize>;

// Reads a link; tells whether that worked and gave nothing, the one case in which the next source is asked.
bool reads_as_nothing(const char *link, Target &target) {
  const ssize_t length = ::readlink(link, target.data(), Target::capacity());
  target.set_size(length > 0 ? static_cast<std::size_t>(length) : 0);
  return length == 0;
}

// The file that lies two folders below the home. A link that cannot be read does not lead on to the system's
// library, only to the program: a promise to installations that keep an older library there.
Target file_of_installation() {
  Target target;
  if (reads_as_nothing(kLibraryLink, target)) reads_as_nothing(kSystemLibraryLink, target);
  if (target.empty() && reads_as_nothing(kProgramLink, target)) {
    const std::string_view program = view_of(std::getenv(kProgramVariable));
    if (program.size() < kProgramVariableSize) target.assign(program);
  }
  return target;
}

// The current directory, or empty when it cannot be told or is too long.
Folder current_folder() {
  Folder folder;
  if (::getcwd(folder.data(), kHomeSize) != nullptr) folder.terminated_by_callee();
  return folder;
}

// The folder of a relative name counts from the current directory. One that begins with "./" counts as the
// current directory itself, whatever follows.
Folder folder_of_relative(std::string_view name) {
  const std::size_t slash = name.rfind('/');
  if (slash == std::string_view::npos) return Folder();
  std::string_view remainder(name.data(), slash + 1);
  while (remainder.ends_with("//")) {
    remainder.remove_suffix(1);
  }
  if (remainder[0] == '.' && remainder[1] == '/') remainder = {};  // a slash ends it, so a dot is not all
  Folder folder = current_folder();
  if (!folder.empty()) folder.append('/');
  return folder.append(remainder);
}

using ParentPath = FixedText<kHomeSize + 3>;

// By way of entering the folder. The one that we come from is held open, so that the way back works even
// where its name is gone.
Folder entered(const ParentPath &path, const UniqueDescriptor &before) {
  if (::chdir(path.c_str()) != 0) return Folder();
  Folder folder = current_folder();
  if (::fchdir(before.get()) != 0) folder.clear();
  return folder;
}

// Without entering a folder that could be entered.
Folder looked_up(const ParentPath &path) {
  FixedText<PATH_MAX> name;
  const bool can_be_entered = ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
  if (!can_be_entered || ::realpath(path.c_str(), name.data()) == nullptr) return Folder();
  name.terminated_by_callee();
  return name.size() < kHomeSize ? Folder(name.view()) : Folder();
}

// The parent in its canonical form. A current directory that cannot be held, for want of a descriptor say, is
// not left.
Folder parent_of(std::string_view folder) {
  ParentPath path(folder);
  path.append("/..");
  const UniqueDescriptor before(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  return before.is_open() ? entered(path, before) : looked_up(path);
}

}  // namespace

FixedText<kHomeSize> installation_home() {
  const Target file = file_of_installation();
  const std::string_view name = file.view();
  if (name.starts_with('/')) return parent_of(Folder({name.data(), name.rfind('/')}).view());
  const Folder folder = folder_of_relative(name);
  return folder.empty() ? folder : parent_of(folder.view());
}

}  // namespace zorvcrt::settings
