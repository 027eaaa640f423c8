// QUOR_HOME: the installation's home, by way of the links that lead into it.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>

#include "next_function.hpp"
#include "zorvrcs_fixture.hpp"

namespace {

namespace fs = std::filesystem;

// What readlink gives for a path instead of the truth; "" is a target of length 0, which no file system has.
std::map<std::string, std::string> *pretended_links = nullptr;
int getcwd_failures = 0;  // how many calls are still to fail

}  // namespace

// Take the place of the system's for the library, too.
extern "C" ssize_t readlink(const char *path, char *target, size_t size) noexcept {
  if (pretended_links != nullptr) {
    if (const auto link = pretended_links->find(path); link != pretended_links->end()) {
      return static_cast<ssize_t>(link->second.copy(target, size));
    }
  }
  return ::syscall(SYS_readlink, path, target, size);
}

extern "C" char *getcwd(char *buffer, size_t size) noexcept {
  if (getcwd_failures > 0) {
    --getcwd_failures;
    errno = EACCES;
    return nullptr;
  }
  static const auto system_getcwd = support::next_function<char *(*)(char *, size_t)>("getcwd");
  return system_getcwd(buffer, size);
}

namespace {

using namespace settings_test;

constexpr char kLibraryLink[] = "/usr/local/zorv/sys/lib/libquor.so";
constexpr char kSystemLibraryLink[] = "/usr/lib/libquor.so";
constexpr char kProgramLink[] = "/proc/self/exe";

class SettingsHome : public FixedPathSettingsTest {
 protected:
  void TearDown() override {
    pretended_links = nullptr;
    getcwd_failures = 0;
    FixedPathSettingsTest::TearDown();
  }

  // The home that a load finds, as it lands in the tree and in the environment.
  std::string home() {
    const fs::path before = fs::read_symlink("/proc/self/cwd");
    const int descriptors = support::open_descriptors();
    QuorConfRemove();
    ::unsetenv("QUOR_HOME");
    QuorConfCreate();
    EXPECT_EQ(fs::read_symlink("/proc/self/cwd"), before) << "the current directory has changed";
    EXPECT_EQ(support::open_descriptors(), descriptors);
    const std::string in_tree = stored("QUOR_HOME");
    EXPECT_EQ(in_tree == "(none)" ? "(unset)" : in_tree, variable("QUOR_HOME"));
    return in_tree;
  }

  std::string home_by(const std::string &target) {
    fs::remove_all(kLibraryLink);
    support::make_link(target, kLibraryLink);
    return home();
  }

  // The home that a load finds when it can open nothing.
  std::string home_without_descriptors(const std::string &target) {
    fs::remove_all(kLibraryLink);
    support::make_link(target, kLibraryLink);
    QuorConfRemove();
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    QuorConfCreate();
    ::setrlimit(RLIMIT_NOFILE, &before);
    return stored("QUOR_HOME");
  }

  // The home that the links give, in the place of the real ones; a null target is a link that cannot be read.
  std::string home_when(std::map<std::string, std::string> links) {
    pretended_links = &links;
    const std::string found = home();
    pretended_links = nullptr;
    return found;
  }

  void make_folder(const std::string &name) { fs::create_directories(path(name)); }

  // A folder whose canonical name needs more than the 1023 bytes that there is room for, and "shortcut" to
  // it.
  void make_shortcut_to_a_long_name() {
    std::string folder = path("deep");
    while (folder.size() < 1100) {
      folder += "/" + std::string(200, 'd');
    }
    fs::create_directories(folder + "/lib");
    fs::create_directory_symlink(folder + "/lib", path("shortcut"));
  }
};

TEST_F(SettingsHome, IsTheFolderAboveTheOneOfTheLibrary) {
  make_folder("opt/q/sys/lib");
  EXPECT_EQ(home_by(path("opt/q/sys/lib/libquor.so.8")), path("opt/q/sys"));
}

TEST_F(SettingsHome, IsGivenInCanonicalForm) {
  make_folder("real/deep/lib");
  fs::create_directory_symlink(path("real/deep/lib"), path("shortcut"));
  EXPECT_EQ(home_by(path("shortcut/libquor.so")), path("real/deep"));
  EXPECT_EQ(home_by(path("real/../real//deep/./lib/libquor.so")), path("real/deep"));
}

TEST_F(SettingsHome, OfALibraryInTheRootIsTheRoot) {
  EXPECT_EQ(home_by("/libquor.so"), "/");
  EXPECT_EQ(home_by("/usr/libquor.so"), "/");
}

TEST_F(SettingsHome, IsAbsentWhenTheFolderCannotBeEntered) {
  EXPECT_EQ(home_by(path("missing/lib/libquor.so")), "(none)");
  support::write_file(path("file"), "");
  EXPECT_EQ(home_by(path("file/libquor.so")), "(none)");
}

TEST_F(SettingsHome, IsFoundWithoutAFreeDescriptorToo) {
  make_folder("opt/lib");
  make_folder("elsewhere");
  fs::create_directory_symlink(path("opt/lib"), path("elsewhere/lib"));
  EXPECT_EQ(home_without_descriptors(path("elsewhere/lib/libquor.so")), path("opt"));
  EXPECT_EQ(home_without_descriptors("opt/lib/libquor.so"), path("opt"));
  EXPECT_EQ(home_without_descriptors("/libquor.so"), "/");
  EXPECT_EQ(home_without_descriptors(path("missing/lib/libquor.so")), "(none)");
  support::write_file(path("file"), "");
  EXPECT_EQ(home_without_descriptors(path("file/libquor.so")), "(none)");
}

TEST_F(SettingsHome, WithoutAFreeDescriptorIsAbsentWhenItIsTooLong) {
  make_shortcut_to_a_long_name();
  EXPECT_EQ(home_without_descriptors(path("shortcut/libquor.so")), "(none)");
}

TEST_F(SettingsHome, CountsARelativeLinkFromTheCurrentDirectory) {
  make_folder("sub/lib");
  EXPECT_EQ(home_by("sub/lib/libquor.so"), path("sub"));
  EXPECT_EQ(home_by("sub/libquor.so"), path("").substr(0, path("").size() - 1));
  EXPECT_EQ(home_by("sub/lib//libquor.so"), path("sub"));
  EXPECT_EQ(home_by("sub/lib////libquor.so"), path("sub"));
  const support::CurrentFolder inside(path("sub/lib"));
  EXPECT_EQ(home_by("../lib/libquor.so"), path("sub"));
}

TEST_F(SettingsHome, TakesARelativeLinkThatBeginsWithADotAsTheCurrentDirectoryItself) {
  make_folder("sub/lib");
  const support::CurrentFolder inside(path("sub"));
  EXPECT_EQ(home_by("./libquor.so"), fs::path(path("x")).parent_path());
  EXPECT_EQ(home_by("./lib/libquor.so"), fs::path(path("x")).parent_path());
  EXPECT_EQ(home_by("./missing/libquor.so"), fs::path(path("x")).parent_path());
}

TEST_F(SettingsHome, IsAbsentForARelativeLinkWithoutASlash) {
  EXPECT_EQ(home_by("libquor.so"), "(none)");
}

TEST_F(SettingsHome, UsesARelativeNameAsItIsWhenTheCurrentDirectoryCannotBeTold) {
  make_folder("sub/lib");
  getcwd_failures = 1;
  EXPECT_EQ(home_by("sub/lib/libquor.so"), path("sub"));
}

TEST_F(SettingsHome, IsAbsentWhenNeitherTheCurrentDirectoryNorANameCanBeTold) {
  getcwd_failures = 1;
  EXPECT_EQ(home_by("./libquor.so"), "(none)");
}

TEST_F(SettingsHome, IsAbsentWhenTheFolderThatWasEnteredCannotBeTold) {
  make_folder("opt/lib");
  getcwd_failures = 1;
  EXPECT_EQ(home_by(path("opt/lib/libquor.so")), "(none)");
}

TEST_F(SettingsHome, ComesBackToACurrentDirectoryThatHasLostItsName) {
  make_folder("opt/lib");
  make_folder("gone");
  support::make_link(path("opt/lib/libquor.so"), kLibraryLink);
  const support::CurrentFolder inside(path("gone"));
  fs::remove(path("gone"));
  EXPECT_EQ(home(), path("opt"));
}

TEST_F(SettingsHome, ThatIsTooLongIsAbsent) {
  make_shortcut_to_a_long_name();
  EXPECT_EQ(home_by(path("shortcut/libquor.so")), "(none)");
}

TEST_F(SettingsHome, NameIsCutAt1023Bytes) {
  // 1023 bytes end exactly behind "keep"; what is cut off would lead elsewhere.
  make_folder("keep");
  make_folder("keepx");
  const std::string base = path("");
  std::string target = base;
  while (target.size() + 2 <= 1023 - 4) {
    target += "./";
  }
  if (target.size() < 1023 - 4) target.insert(base.size(), "/");
  target += "keep";
  ASSERT_EQ(target.size(), 1023U);
  EXPECT_EQ(home_by(target + "x/libquor.so"), base.substr(0, base.size() - 1));
  fs::remove(path("keep"));
  EXPECT_EQ(home_by(target + "x/libquor.so"), "(none)");
}

TEST_F(SettingsHome, ComesFromTheProgramWhenTheLinkCannotBeRead) {
  EXPECT_EQ(home(), fs::read_symlink(kProgramLink).parent_path().parent_path());
  support::write_file(kLibraryLink, "no link");
  EXPECT_EQ(home(), fs::read_symlink(kProgramLink).parent_path().parent_path());
}

TEST_F(SettingsHome, DoesNotMoveOnToTheSystemsLibraryWhenTheLinkCannotBeRead) {
  make_folder("system/lib");
  support::make_link(path("system/lib/libquor.so"), kSystemLibraryLink);
  EXPECT_EQ(home(), fs::read_symlink(kProgramLink).parent_path().parent_path());
}

TEST_F(SettingsHome, MovesOnToTheSystemsLibraryOnlyFromAnEmptyTarget) {
  make_folder("system/lib");
  EXPECT_EQ(home_when({{kLibraryLink, ""}, {kSystemLibraryLink, path("system/lib/libquor.so")}}),
            path("system"));
}

TEST_F(SettingsHome, MovesOnToTheVariableOnlyFromAnEmptyTargetOfTheProgram) {
  make_folder("bin/sub");
  ::setenv("_", path("bin/sub/program").c_str(), 1);
  EXPECT_EQ(home_when({{kProgramLink, ""}}), path("bin"));
  ::setenv("_", "bin/sub/program", 1);
  EXPECT_EQ(home_when({{kProgramLink, ""}}), path("bin"));
  ::unsetenv("_");
  EXPECT_EQ(home_when({{kProgramLink, ""}}), "(none)");
}

TEST_F(SettingsHome, TakesTheVariableWhenItIsShorterThan1024Bytes) {
  for (const std::size_t length : {1022U, 1023U, 1024U}) {
    ::setenv("_", ("/usr/bin/" + std::string(length - 9, 'p')).c_str(), 1);
    EXPECT_EQ(home_when({{kProgramLink, ""}}), length < 1024 ? "/usr" : "(none)") << length;
  }
}

TEST_F(SettingsHome, ReadsALinkUpTo2047Bytes) {
  EXPECT_EQ(home_when({{kLibraryLink, "/usr/" + std::string(2043, 'x') + "/lib/libquor.so"}}), "/");
  EXPECT_EQ(home_when({{kLibraryLink, "/usr/" + std::string(2041, 'x') + "/lib/libquor.so"}}), "(none)");
}

TEST_F(SettingsHome, OverwritesTheVariable) {
  ::setenv("QUOR_HOME", "/elsewhere", 1);
  make_folder("opt/lib");
  support::make_link(path("opt/lib/libquor.so"), kLibraryLink);
  EXPECT_EQ(query("QUOR_HOME"), path("opt"));
  EXPECT_EQ(variable("QUOR_HOME"), path("opt"));
}

TEST_F(SettingsHome, IsTheFirstNonPrivilegedSetting) {
  prepare("A=1\n");
  EXPECT_EQ(all_entries().front().name, "QUOR_HOME");
}

TEST_F(SettingsHome, SetByAFileChangesTheTreeButNotTheEnvironment) {
  make_folder("opt/lib");
  support::make_link(path("opt/lib/libquor.so"), kLibraryLink);
  prepare("QUOR_HOME=/from/file\n[PRIVILEGED]\nQUOR_HOME=/privileged\n");
  EXPECT_EQ(query("QUOR_HOME"), path("opt"));
  EXPECT_EQ(stored("QUOR_HOME"), "/from/file");
  EXPECT_EQ(query("QUOR_HOME", 1), "/privileged");
}

TEST_F(SettingsHome, IsNotDerivedUnderAnExplicitPath) {
  make_folder("opt/lib");
  support::make_link(path("opt/lib/libquor.so"), kLibraryLink);
  QuorConfSetPath(path("none").c_str());
  EXPECT_EQ(stored("QUOR_HOME"), "(none)");
  QuorConfSetPath(nullptr);
  EXPECT_EQ(stored("QUOR_HOME"), path("opt"));
}

}  // namespace
