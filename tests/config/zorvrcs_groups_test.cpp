// Group sections: whose lines are kept, by the supplementary groups of the process and by nothing else.
#include <grp.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <vector>

#include "zorvrcs_fixture.hpp"

namespace {

bool getgroups_fails = false;

}  // namespace

// Takes the place of the system's for the library, too.
extern "C" int getgroups(int size, gid_t *list) noexcept {
  if (getgroups_fails) {
    errno = EINVAL;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_getgroups, size, list));
}

namespace {

using namespace settings_test;

// A test in which the process is in the groups 40001 and 40002 and its primary group is "primary".
class SettingsGroups : public FixedPathSettingsTest {
 protected:
  void SetUp() override {
    FixedPathSettingsTest::SetUp();
    if (IsSkipped()) return;
    support::write_group_file("one:x:40001:\ntwo:x:40002:\nMixed:x:40002:\nother:x:40003:\nprimary:x:" +
                              std::to_string(::getgid()) + ":" + "\n");
  }

  void enter_groups(const std::vector<gid_t> &groups) {
    if (::setgroups(groups.size(), groups.data()) != 0) GTEST_SKIP() << "supplementary groups cannot be set";
  }

  // Whether the lines below the header are kept.
  bool is_kept(const std::string &header) {
    const Entries kept = load(header + "\nA=1\n");
    EXPECT_TRUE(kept.empty() || kept == Entries({grouped("A", "1")})) << header;
    return !kept.empty();
  }
};

class SettingsGroupsMember : public SettingsGroups {
 protected:
  void SetUp() override {
    SettingsGroups::SetUp();
    if (IsSkipped()) return;
    before_.resize(static_cast<std::size_t>(::getgroups(0, nullptr)));
    ::getgroups(static_cast<int>(before_.size()), before_.data());
    enter_groups({40001, 40002});
  }
  void TearDown() override {
    if (!IsSkipped()) {
      EXPECT_EQ(::setgroups(before_.size(), before_.data()), 0);
    }
    SettingsGroups::TearDown();
  }

 private:
  std::vector<gid_t> before_;
};

TEST_F(SettingsGroupsMember, KeepsTheSectionOfASupplementaryGroup) {
  EXPECT_TRUE(is_kept("[GROUP:one]"));
  EXPECT_TRUE(is_kept("[group:two]"));
  EXPECT_TRUE(is_kept("[GROUPS:two] and more"));
}

TEST_F(SettingsGroupsMember, DropsTheSectionOfAnotherGroup) {
  EXPECT_FALSE(is_kept("[GROUP:other]"));
}

TEST_F(SettingsGroupsMember, OneGroupOfTheListIsEnough) {
  for (const char *list : {"other,one", "one,other", "unknown other one", " , ,\tone, ", "unknown,,two",
                           "other\tunknown,\vone"}) {
    EXPECT_TRUE(is_kept(std::string("[GROUP:") + list + "]")) << list;
  }
}

TEST_F(SettingsGroupsMember, NoGroupOfTheListIsNotEnough) {
  for (const char *list :
       {"", " ", ",", "unknown", "other,unknown", "one:two", "one;two", "on", "onee", "ONE"}) {
    EXPECT_FALSE(is_kept(std::string("[GROUP:") + list + "]")) << list;
  }
}

TEST_F(SettingsGroupsMember, LooksAtTheListUpToTheFirstClosingBracket) {
  EXPECT_FALSE(is_kept("[GROUP:other] one]"));
}

TEST_F(SettingsGroupsMember, DoesNotChangeTheCaseOfGroupNames) {
  EXPECT_TRUE(is_kept("[group:Mixed]"));
  EXPECT_FALSE(is_kept("[GROUP:MIXED]"));
  EXPECT_FALSE(is_kept("[GROUP:mixed]"));
}

TEST_F(SettingsGroupsMember, DoesNotConsultThePrimaryGroup) {
  EXPECT_FALSE(is_kept("[GROUP:primary]"));
}

TEST_F(SettingsGroupsMember, TakesAGroupNameThatIsAsLongAsALine) {
  EXPECT_TRUE(is_kept("[GROUP:" + std::string(2000, 'x') + " one]"));
}

TEST_F(SettingsGroupsMember, BelongsToNoGroupWhenTheListCannotBeRead) {
  getgroups_fails = true;
  EXPECT_FALSE(is_kept("[GROUP:one]"));
  getgroups_fails = false;
}

TEST_F(SettingsGroupsMember, ReadsTheLongestListThatTheKernelAllows) {
  std::vector<gid_t> groups(65536, 40003);
  groups[0] = 40001;
  enter_groups(groups);
  EXPECT_TRUE(is_kept("[GROUP:one]"));
}

TEST_F(SettingsGroupsMember, GroupSettingsStandBetweenPrivilegedAndNonPrivilegedOnes) {
  EXPECT_EQ(load("A=n\n[GROUP:one]\nA=g\nG=g\n[PRIVILEGED]\nA=p\nG=p\n"),
            Entries({privileged("A", "p"), privileged("G", "p"), grouped("A", "g"), grouped("G", "g"),
                     nonprivileged("A", "n")}));
  EXPECT_EQ(query("A", 2), "g");
  EXPECT_EQ(query("A", 3), "g");
  EXPECT_EQ(query("G", 1), "p");
  ::unsetenv("G");
  EXPECT_EQ(query("G", 7), "g");
}

TEST_F(SettingsGroupsMember, PrintShowsTheGroupLevelWithTheEnvironmentOverIt) {
  load("[GROUP:one]\nG=g\nH=h\n");
  ::setenv("G", "environment", 1);
  support::CapturedDescriptor output(1);
  QuorConfPrint();
  EXPECT_NE(
      output.text().find("Table level : Group\n\tG\tenvironment\n\tH\th\nTable level : Non-privileged\n"),
      std::string::npos)
      << output.text();
}

TEST_F(SettingsGroups, UserAndPrimaryGroupGiveNoMembership) {
  if (::getgroups(0, nullptr) != 0 && ::setgroups(0, nullptr) != 0) {
    GTEST_SKIP() << "supplementary groups cannot be given up";
  }
  EXPECT_FALSE(is_kept("[GROUP:primary]"));
  EXPECT_FALSE(is_kept("[GROUP:one,two,other]"));
}

}  // namespace
