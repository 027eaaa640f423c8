// Which settings files are read, in which order, and what happens when there are none.
#include <nss.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>

#include "capabilities.hpp"
#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;
namespace fs = std::filesystem;

constexpr char kDefaultFile[] = "/usr/local/zorv/sys/conf/quor.conf";
constexpr char kDataAreaFile[] = "/usr/local/zorv/var/conf/sys/quor.conf";
const std::string kUserFile = std::string(support::kPrivateHome) + "/.ZORVrcs";

class SettingsSearch : public FixedPathSettingsTest {
 protected:
  // What a fresh load gives.
  static Entries loaded() {
    QuorConfRemove();
    return entries();
  }
};

TEST_F(SettingsSearch, GivesTheBlockSizeWithoutAnyFile) {
  EXPECT_EQ(QuorConfExists(), 1);
  EXPECT_EQ(query("QUOR_BLOCK_SIZE", 7), "2048");
  EXPECT_EQ(entries(), Entries());
}

TEST_F(SettingsSearch, ReadsTheDefaultFile) {
  support::write_file(kDefaultFile, "A=1\n[PRIVILEGED]\nB=2\n");
  EXPECT_EQ(loaded(), Entries({privileged("B", "2"), nonprivileged("A", "1")}));
}

TEST_F(SettingsSearch, PrefersTheFileOfTheDataArea) {
  support::write_file(kDefaultFile, "A=default\nB=default\n");
  support::write_file(kDataAreaFile, "A=data area\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "data area")}));
}

TEST_F(SettingsSearch, FindsTheDataAreaThroughItsLink) {
  support::write_file("/usr/local/zorv/data/conf/sys/quor.conf", "A=linked\n");
  support::make_link("data", "/usr/local/zorv/var");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "linked")}));
}

TEST_F(SettingsSearch, FallsBackWhenTheDataAreaHasNoFile) {
  support::write_file(kDefaultFile, "A=default\n");
  fs::create_directories("/usr/local/zorv/var/conf/sys");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "default")}));
}

TEST_F(SettingsSearch, ReadsTheUsersFileAfterTheSystemFile) {
  support::write_file(kDefaultFile, "A=system\nB=system\nC=system\n");
  support::write_file(kUserFile, "B=user\nC=\nD=$A\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "system"), nonprivileged("B", "user"),
                               nonprivileged("D", "system")}));
}

// The user's line of the private user database with another home, or none at all.
void know_user(const std::string &home) {
  const std::string id = std::to_string(::getuid());
  support::write_file("/etc/passwd", home.empty() ? "" : "user:x:" + id + ":0::" + home + ":/bin/sh\n");
}

TEST_F(SettingsSearch, FindsTheUsersFileAlsoInAHomeWrittenWithASlashAtTheEnd) {
  const std::string users = support::read_file("/etc/passwd");
  know_user(std::string(support::kPrivateHome) + "/");
  support::write_file(kUserFile, "A=user\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "user")}));
  support::write_file("/etc/passwd", users);
}

TEST_F(SettingsSearch, ReadsNoUsersFileForAUserThatTheSystemDoesNotKnow) {
  ASSERT_EQ(__nss_configure_lookup("passwd", "files"), 0);
  const std::string users = support::read_file("/etc/passwd");
  know_user("");
  support::write_file(kUserFile, "A=user\n");
  EXPECT_EQ(loaded(), Entries({}));
  support::write_file("/etc/passwd", users);
}

TEST_F(SettingsSearch, IgnoresThePrivilegedSectionOfTheUsersFile) {
  support::write_file(kDefaultFile, "[PRIVILEGED]\nA=system\n");
  support::write_file(kUserFile, "[PRIVILEGED]\nA=user\nB=user\n[NONPRIVILEGED]\nC=user\n");
  EXPECT_EQ(loaded(), Entries({privileged("A", "system"), nonprivileged("C", "user")}));
  EXPECT_EQ(query("A", 1), "system");
  EXPECT_EQ(query("B", 7), "(none)");
}

TEST_F(SettingsSearch, LetsThePrivilegedSectionOfTheUsersFileEndAtTheNextKnownHeader) {
  support::write_file(kUserFile, "A=1\n[PRIVILEGED]\n[Misc]\nB=2\n[NONPRIVILEGED]\nC=3\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "1"), nonprivileged("C", "3")}));
}

TEST_F(SettingsSearch, ReadsTheUsersFileWithoutASystemFile) {
  support::write_file(kUserFile, "A=user\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "user")}));
}

TEST_F(SettingsSearch, ReadsTheExtensionFolderBesideTheSystemFileLast) {
  support::write_file(kDefaultFile, "A=system\nB=system\nC=system\n");
  support::write_file(kUserFile, "B=user\n");
  support::write_file("/usr/local/zorv/sys/conf/quor.d/10.conf",
                      "B=extension\nC=\n[PRIVILEGED]\nD=extension\n");
  EXPECT_EQ(loaded(), Entries({privileged("D", "extension"), nonprivileged("A", "system"),
                               nonprivileged("B", "extension")}));
}

TEST_F(SettingsSearch, LooksForTheExtensionFolderBesideTheFileThatWasRead) {
  support::write_file(kDataAreaFile, "A=1\n");
  support::write_file("/usr/local/zorv/sys/conf/quor.d/10.conf", "B=wrong\n");
  support::write_file("/usr/local/zorv/var/conf/sys/quor.d/10.conf", "B=right\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "1"), nonprivileged("B", "right")}));
}

TEST_F(SettingsSearch, LooksForNoExtensionFolderWithoutASystemFile) {
  support::write_file("/usr/local/zorv/sys/conf/quor.d/10.conf", "A=1\n");
  EXPECT_EQ(loaded(), Entries());
}

TEST_F(SettingsSearch, ReadsExtensionFilesWithTheMarkAnywhereInTheirNames) {
  support::write_file(kDefaultFile, "");
  const std::string folder = "/usr/local/zorv/sys/conf/quor.d/";
  int number = 0;
  for (const char *name : {"a.conf", ".conf", "b.conf.old", "c.config", "d.conf~"}) {
    support::write_file(folder + name, "YES" + std::to_string(number++) + "=1\n");
  }
  for (const char *name : {"conf", "e.CONF", "f.con", "g_conf", "h"}) {
    support::write_file(folder + name, "NO" + std::to_string(number++) + "=1\n");
  }
  fs::create_directory(folder + "folder.conf");
  fs::create_symlink("nowhere", folder + "link.conf");
  Entries found = loaded();
  std::sort(found.begin(), found.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
  Entries expected;
  for (int i = 0; i < 5; ++i) {
    expected.push_back(nonprivileged("YES" + std::to_string(i), "1"));
  }
  EXPECT_EQ(found, expected);
}

// A pipe that nobody writes to would be waited for until the end of days.
TEST_F(SettingsSearch, PassesOverPipesAndDevicesAmongTheExtensionFiles) {
  support::write_file(kDefaultFile, "");
  const std::string folder = "/usr/local/zorv/sys/conf/quor.d/";
  support::write_file(folder + "file.conf", "A=1\n");
  ASSERT_EQ(::mkfifo((folder + "pipe.conf").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", folder + "device.conf");
  const int descriptors = support::open_descriptors();
  ::alarm(30);
  EXPECT_EQ(loaded(), (Entries{nonprivileged("A", "1")}));
  ::alarm(0);
  EXPECT_EQ(support::open_descriptors(), descriptors);
}

TEST_F(SettingsSearch, ReadsExtensionFilesInTheOrderOfTheDirectory) {
  support::write_file(kDefaultFile, "");
  const fs::path folder = "/usr/local/zorv/sys/conf/quor.d";
  for (char c = 'z'; c >= 'a'; --c) {
    support::write_file(folder / (std::string(1, c) + ".conf"), std::string("LAST=") + c + "\n");
  }
  std::string last;
  for (const auto &entry : fs::directory_iterator(folder)) {
    last = entry.path().stem();
  }
  EXPECT_EQ(loaded(), Entries({nonprivileged("LAST", last)}));
}

TEST_F(SettingsSearch, IgnoresAnExtensionFolderThatIsAFile) {
  support::write_file(kDefaultFile, "[PRIVILEGED]\nQUOR_CONF_DIR=" + path("other") + "\n");
  support::write_file("/usr/local/zorv/sys/conf/quor.d", "A=1\n");
  support::write_file(path("other/x.conf"), "B=2\n");
  EXPECT_EQ(loaded().back(), nonprivileged("B", "2"));
}

TEST_F(SettingsSearch, TakesTheExtensionFolderFromThePrivilegedSettingOnlyWithoutOneBesideTheFile) {
  support::write_file(kDefaultFile, "[PRIVILEGED]\nQUOR_CONF_DIR=" + path("other") + "\n");
  support::write_file(path("other/x.conf"), "A=other\n");
  EXPECT_EQ(loaded().back(), nonprivileged("A", "other"));
  support::write_file("/usr/local/zorv/sys/conf/quor.d/x.conf", "A=beside\n");
  EXPECT_EQ(loaded().back(), nonprivileged("A", "beside"));
}

TEST_F(SettingsSearch, TakesTheExtensionFolderOnlyFromThePrivilegedLevel) {
  support::write_file(kDefaultFile, "QUOR_CONF_DIR=" + path("other") + "\n");
  support::write_file(kUserFile, "[PRIVILEGED]\nQUOR_CONF_DIR=" + path("other") + "\n");
  ::setenv("QUOR_CONF_DIR", path("other").c_str(), 1);
  support::write_file(path("other/x.conf"), "A=other\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("QUOR_CONF_DIR", path("other"))}));
}

TEST_F(SettingsSearch, KeepsReadingTheExtensionFolderThatAnExtensionRenames) {
  const std::string folder = path("other");
  prepare("[PRIVILEGED]\nQUOR_CONF_DIR=" + folder + "\n");
  for (const char *name : {"1.conf", "2.conf", "3.conf"}) {
    support::write_file(folder + "/" + name,
                        std::string("[PRIVILEGED]\nQUOR_CONF_DIR=") + name + "\nN" + name[0] + "=1\n");
  }
  EXPECT_EQ(entries().size(), 4U);
}

TEST_F(SettingsSearch, PassesOverAnExtensionFolderThatIsMissing) {
  prepare("[PRIVILEGED]\nQUOR_CONF_DIR=" + path("missing") + "\nA=1\n");
  EXPECT_EQ(entries().size(), 2U);
}

TEST_F(SettingsSearch, ReadsAFolderInTheFilesPlaceAsAnEmptyFile) {
  fs::create_directories(kDataAreaFile);
  support::write_file(kDefaultFile, "A=default\n");
  EXPECT_EQ(loaded(), Entries());
}

TEST_F(SettingsSearch, PassesOverFilesThatItMayNotRead) {
  support::write_file(kDataAreaFile, "A=data area\n");
  support::write_file(kDefaultFile, "B=default\n");
  support::write_file(kUserFile, "C=user\n");
  ::chmod(kDataAreaFile, 0);
  ::chmod(kUserFile.c_str(), 0);
  const support::WithoutCapabilities like_anybody;
  EXPECT_EQ(loaded(), Entries({nonprivileged("B", "default")}));
}

TEST_F(SettingsSearch, PassesOverALinkThatLeadsToItself) {
  support::make_link("quor.conf", kDefaultFile);
  support::write_file(kUserFile, "A=user\n");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "user")}));
}

TEST_F(SettingsSearch, DoesNotTouchTheCurrentFoldersFileInTheNormalOrder) {
  support::write_file(path(".ZORVrcs"), "A=current\n");
  EXPECT_EQ(loaded(), Entries());
}

// The explicit path.

TEST_F(SettingsSearch, AnExplicitPathTakesThePlaceOfTheDefaultFile) {
  support::write_file(kDefaultFile, "A=default\n");
  support::write_file(kUserFile, "B=user\n");
  support::write_file(path("own/my.conf"), "A=explicit\n");
  support::write_file(path("own/quor.d/x.conf"), "C=extension\n");
  QuorConfSetPath(path("own/my.conf").c_str());
  EXPECT_EQ(variable("A"), "explicit");  // loaded and exported at once
  EXPECT_EQ(all_entries(), Entries({nonprivileged("A", "explicit"), nonprivileged("B", "user"),
                                    nonprivileged("C", "extension")}));
}

TEST_F(SettingsSearch, AnExplicitPathDoesNotSettleTheBlockSize) {
  support::write_file(path("my.conf"), "QUOR_BLOCK_SIZE=3000\n");
  QuorConfSetPath(path("missing").c_str());
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "(none)");
  QuorConfSetPath(path("my.conf").c_str());
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "3000");
  ::unsetenv("QUOR_BLOCK_SIZE");
  QuorConfRemove();
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "4096");  // a first load by a query does
}

TEST_F(SettingsSearch, AnExplicitPathYieldsToTheFileOfTheDataArea) {
  support::write_file(kDataAreaFile, "A=data area\n");
  support::write_file(path("my.conf"), "A=explicit\n");
  QuorConfSetPath(path("my.conf").c_str());
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "data area")}));
}

TEST_F(SettingsSearch, AnExplicitPathStaysForLaterLoads) {
  support::write_file(path("my.conf"), "A=explicit\n");
  QuorConfSetPath(path("my.conf").c_str());
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "explicit")}));
  EXPECT_EQ(stored("QUOR_HOME"), "(none)");
}

TEST_F(SettingsSearch, NoPathRestoresTheDefaultWithoutLoading) {
  for (const char *nothing : {static_cast<const char *>(nullptr), ""}) {
    support::write_file(kDefaultFile, "A=default\n");
    support::write_file(path("my.conf"), "A=explicit\n");
    QuorConfSetPath(path("my.conf").c_str());
    QuorConfSetPath(nothing);
    EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
    EXPECT_EQ(stored("A"), "default");
    EXPECT_NE(stored("QUOR_HOME"), "(none)");
  }
}

TEST_F(SettingsSearch, AnExplicitPathMayBeRelative) {
  support::write_file(path("my.conf"), "A=1\n");
  support::write_file(path("quor.d/x.conf"), "B=2\n");
  QuorConfSetPath("my.conf");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1"), nonprivileged("B", "2")}));
}

TEST_F(SettingsSearch, ABackslashSeparatesTheFolderOfTheExtensionsToo) {
  support::write_file(path("own\\my.conf"), "A=1\n");
  support::write_file(path("own\\quor.d/x.conf"), "B=2\n");
  QuorConfSetPath("own\\my.conf");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1"), nonprivileged("B", "2")}));
}

TEST_F(SettingsSearch, AnExplicitPathMayBeASettingOfTheTree) {
  support::write_file(path("my.conf"), "A=1\n");
  ::setenv("__QUORCONF_NOENV", "1", 1);
  support::write_file(kDefaultFile, "P=" + path("my.conf") + "\n");
  QuorConfSetPath(QuorConfQuery("P", 7));
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1")}));
}

TEST_F(SettingsSearch, AnExplicitPathOfAnyLengthIsAMissingFile) {
  for (const std::size_t length : {4095U, 4096U, 5000U, 100000U}) {
    support::write_file(kUserFile, "A=user\n");
    QuorConfSetPath(std::string(length, '/').append("x").c_str());
    EXPECT_EQ(entries(), Entries({nonprivileged("A", "user")}));
  }
}

// __KERNEL_DEVELOPER.

TEST_F(SettingsSearch, TheDevelopersFileTakesThePlaceOfAllOthers) {
  support::write_file(kDataAreaFile, "A=data area\n");
  support::write_file(kDefaultFile, "B=default\n");
  support::write_file(kUserFile, "C=user\n");
  support::write_file(path("quor.d/x.conf"), "D=extension\n");
  support::write_file(path(".ZORVrcs"), "E=current\n");
  prepare("F=developer\n[PRIVILEGED]\nP=developer\n");
  EXPECT_EQ(entries(), Entries({privileged("P", "developer"), nonprivileged("F", "developer")}));
}

TEST_F(SettingsSearch, TheDevelopersFileMayNameAnExtensionFolder) {
  support::write_file(path("more/x.conf"), "D=extension\n");
  prepare("[PRIVILEGED]\nQUOR_CONF_DIR=" + path("more") + "\n");
  EXPECT_EQ(entries().back(), nonprivileged("D", "extension"));
}

TEST_F(SettingsSearch, TheCurrentFoldersFileStandsInForTheDevelopersFile) {
  support::write_file(path(".ZORVrcs"), "[PRIVILEGED]\nE=current\n");
  ::setenv("__KERNEL_DEVELOPER", path("missing").c_str(), 1);
  EXPECT_EQ(loaded(), Entries({privileged("E", "current")}));
}

TEST_F(SettingsSearch, TheDevelopersPathMayNameADriveOrBeginWithABackslash) {
  for (const char *name : {"C:x", "\\x", "::"}) {
    support::write_file(path(name), "A=1\n");
    ::setenv("__KERNEL_DEVELOPER", name, 1);
    EXPECT_EQ(loaded(), Entries({nonprivileged("A", "1")})) << name;
  }
}

TEST_F(SettingsSearch, ARelativeDevelopersPathIsAFailure) {
  support::write_file(path(".ZORVrcs"), "A=current\n");
  support::write_file(path("x"), "A=1\n");
  support::write_file(path("\\"), "A=1\n");
  for (const char *name : {"", "x", "./x", "\\", ":x"}) {
    ::setenv("__KERNEL_DEVELOPER", name, 1);
    QuorConfRemove();
    EXPECT_EQ(QuorConfExists(), 0) << name;
  }
}

TEST_F(SettingsSearch, AFailedLoadLeavesATreeInWhichNoFileWasRead) {
  support::write_file(kUserFile, "A=user\n");
  ::setenv("__KERNEL_DEVELOPER", path("missing").c_str(), 1);
  ::setenv("E", "environment", 1);
  EXPECT_EQ(QuorConfExists(), 0);
  EXPECT_EQ(QuorConfExists(), 1);
  EXPECT_EQ(QuorConfCreate(), 0);
  EXPECT_EQ(entries(), Entries());
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "(none)");
  EXPECT_EQ(variable("QUOR_BLOCK_SIZE"), "(unset)");
  EXPECT_EQ(query("A"), "(none)");
  EXPECT_EQ(query("E"), "environment");
  ::unsetenv("__KERNEL_DEVELOPER");
  EXPECT_EQ(query("A"), "(none)");
  QuorConfRemove();
  EXPECT_EQ(query("A"), "user");
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "2048");
}

TEST_F(SettingsSearch, TheDevelopersFileMakesAnExplicitPathForgottenAndStillExplicit) {
  support::write_file(kDefaultFile, "A=default\n");
  support::write_file(path("my.conf"), "A=explicit\n");
  prepare("A=developer\n");
  QuorConfSetPath(path("my.conf").c_str());
  EXPECT_EQ(stored("A"), "developer");
  EXPECT_EQ(variable("A"), "developer");
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "(none)");
  ::unsetenv("__KERNEL_DEVELOPER");
  EXPECT_EQ(loaded(), Entries({nonprivileged("A", "default")}));
  EXPECT_EQ(stored("QUOR_HOME"), "(none)");
  QuorConfSetPath(nullptr);
  EXPECT_NE(stored("QUOR_HOME"), "(none)");
}

// The fatal end.

class SettingsFatalLoad : public SettingsTest {};

TEST_F(SettingsFatalLoad, EndsTheProcessWithStatus91AndTheSystemsReason) {
  ::setenv("__KERNEL_DEVELOPER", path("missing").c_str(), 1);
  EXPECT_EXIT(QuorConfCreate(), ::testing::ExitedWithCode(91),
              "^Cannot load config file! \\(#9091\\) : No such file or directory\n$");
}

TEST_F(SettingsFatalLoad, TellsTheReasonOfTheLastFileThatWasTried) {
  support::make_link(".ZORVrcs", path(".ZORVrcs"));
  ::setenv("__KERNEL_DEVELOPER", path("missing").c_str(), 1);
  EXPECT_EXIT(QuorConfCreate(), ::testing::ExitedWithCode(91),
              "#9091\\) : Too many levels of symbolic links");
}

TEST_F(SettingsFatalLoad, CallsARelativePathAnInvalidArgument) {
  ::setenv("__KERNEL_DEVELOPER", "relative", 1);
  EXPECT_EXIT(QuorConfCreate(), ::testing::ExitedWithCode(91), "#9091\\) : Invalid argument");
}

TEST_F(SettingsFatalLoad, IsSharedByAllFunctionsThatLoadButExists) {
  ::setenv("__KERNEL_DEVELOPER", "relative", 1);
  EXPECT_EXIT(QuorConfQuery("A", 1), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(QuorConfUpdate("A", "1"), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(QuorConfUpdate("A", nullptr), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(QuorConfStart(), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(QuorConfPrint(), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(QuorConfSetPath("/x"), ::testing::ExitedWithCode(91), "#9091");
  EXPECT_EXIT(
      {
        QuorConfRemove();
        QuorConfSetPath(nullptr);
        QuorConfNext(nullptr, nullptr);
        unload_zorvrcs();
        std::exit(QuorConfExists());
      },
      ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
