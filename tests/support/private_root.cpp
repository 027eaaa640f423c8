#include "private_root.hpp"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "files.hpp"

namespace support {

namespace {

namespace fs = std::filesystem;

void require(bool done, const std::string &what) {
  if (!done) throw std::runtime_error(what + ": " + std::strerror(errno));
}

void write_text(const std::string &path, const std::string &text) {
  const int file = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  require(file >= 0, path);
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(file);
  require(written, path);
}

// As root a mount namespace is enough; an ordinary user gets one inside a user namespace of the same
// identity.
void unshare_mounts() {
  if (::unshare(CLONE_NEWNS) != 0) {
    const std::string uid = std::to_string(::getuid());
    const std::string gid = std::to_string(::getgid());
    require(::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
    write_text("/proc/self/setgroups", "deny");
    write_text("/proc/self/uid_map", uid + " " + uid + " 1");
    write_text("/proc/self/gid_map", gid + " " + gid + " 1");
  }
  require(::mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0, "private propagation");
}

void bind(const std::string &source, const std::string &target) {
  require(::mount(source.c_str(), target.c_str(), "none", MS_BIND | MS_REC, nullptr) == 0, "bind " + target);
}

// Shows at target whatever is at source: a folder or file by a bind mount, a link by a copy of the link.
void show(const fs::path &source, const fs::path &target) {
  if (fs::is_symlink(source)) {
    fs::copy_symlink(source, target);
  } else if (fs::is_directory(source)) {
    fs::create_directory(target);
    bind(source, target);
  } else if (fs::is_regular_file(source)) {
    write_file(target, "");
    bind(source, target);
  }
}

// Makes target a folder of our own that shows every entry of source but those named.
void show_entries(const fs::path &source, const fs::path &target, const std::set<std::string> &except) {
  fs::create_directory(target);
  std::error_code refused;
  for (const auto &entry : fs::directory_iterator(source, refused)) {
    const std::string name = entry.path().filename();
    if (!except.contains(name)) show(entry.path(), target / name);
  }
}

// The passwd file with the real user's home replaced (and the user added where the machine does not know it).
std::string private_passwd() {
  std::string text;
  bool known = false;
  ::setpwent();
  while (const passwd *entry = ::getpwent()) {
    const bool own = entry->pw_uid == ::getuid() && !known;
    known = known || own;
    text += std::string(entry->pw_name) + ":x:" + std::to_string(entry->pw_uid) + ":" +
            std::to_string(entry->pw_gid) + "::" + (own ? kPrivateHome : entry->pw_dir) + ":/bin/sh\n";
  }
  ::endpwent();
  if (!known) {
    text += "tester:x:" + std::to_string(::getuid()) + ":" + std::to_string(::getgid()) +
            "::" + kPrivateHome + ":/bin/sh\n";
  }
  return text;
}

void show_folder(int folder, bool is_tree, const std::string &target) {
  const std::string source = "/proc/self/fd/" + std::to_string(folder);
  const int result = is_tree ? ::move_mount(folder, "", AT_FDCWD, target.c_str(), MOVE_MOUNT_F_EMPTY_PATH)
                             : ::mount(source.c_str(), target.c_str(), "none", MS_BIND, nullptr);
  require(result == 0, "the place of " + target);
}

void build_private_root() {
  const std::string passwd_text = private_passwd();
  const std::string group_text = read_file("/etc/group");
  const fs::path current = fs::current_path();
  unshare_mounts();

  // The new root grows in a fresh file system mounted on /tmp, so nothing is left behind outside;
  // the machine's own /tmp waits aside until it has its place.
  int outer_tmp = ::open_tree(AT_FDCWD, "/tmp", OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE);
  const bool is_tree = outer_tmp >= 0 || errno != ENOSYS;  // valgrind does not know that call
  if (!is_tree) outer_tmp = ::open("/tmp", O_PATH | O_DIRECTORY | O_CLOEXEC);
  require(outer_tmp >= 0, "/tmp");
  require(::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=0755") == 0, "tmpfs");
  const fs::path root = "/tmp/root";
  show_entries("/", root, {"tmp", "usr", ".ZORVrcs"});
  fs::create_directory(root / "tmp");
  show_folder(outer_tmp, is_tree, root / "tmp");
  ::close(outer_tmp);
  show_entries("/usr", root / "usr", {"lib", "local"});
  show_entries("/usr/lib", root / "usr/lib", {"libquor.so"});
  show_entries("/usr/local", root / "usr/local", {"zorv"});

  fs::create_directory(root.string() + kPrivateHome);
  write_file("/tmp/passwd", passwd_text);
  write_file("/tmp/group", group_text);
  bind("/tmp/passwd", root / "etc/passwd");
  bind("/tmp/group", root / "etc/group");

  require(::chroot(root.c_str()) == 0, "chroot");
  std::error_code gone;
  fs::current_path(current, gone);
  if (gone) fs::current_path("/");
}

void clear_additions() {
  for (const char *path : {"/usr/local/zorv", "/usr/lib/libquor.so", "/.ZORVrcs", "/zorvcrt-test-home"}) {
    fs::remove_all(path);
  }
  fs::create_directory(kPrivateHome);
}

}  // namespace

std::string enter_private_root() {
  static bool entered = false;
  try {
    if (entered) {
      clear_additions();
    } else {
      build_private_root();
      entered = true;
    }
  } catch (const std::exception &error) {
    return error.what();
  }
  return "";
}

void write_group_file(const std::string &text) {
  write_text("/etc/group", text);
}

}  // namespace support
