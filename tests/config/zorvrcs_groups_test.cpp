// Group sections: whose lines are kept, by the supplementary groups of the process and by nothing else.
#include <grp.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "zorvrcs_fixture.hpp"

namespace {

// What getgroups tells instead of the truth.
const std::vector<gid_t> *pretended_groups = nullptr;
bool getgroups_fails = false;

}  // namespace

// Takes the place of the system's for the library, too.
extern "C" int getgroups(int size, gid_t *list) noexcept {
  const bool has_room =
      pretended_groups == nullptr || static_cast<std::size_t>(size) >= pretended_groups->size();
  if (getgroups_fails || !has_room) {
    errno = EINVAL;
    return -1;
  }
  if (pretended_groups == nullptr) return static_cast<int>(::syscall(SYS_getgroups, size, list));
  std::copy(pretended_groups->begin(), pretended_groups->end(), list);
  return static_cast<int>(pretended_groups->size());
}

namespace {

using namespace settings_test;

// A test with groups 40001 to 40003 and with the primary group of the process as "primary".
class SettingsGroups : public FixedPathSettingsTest {
 protected:
  void SetUp() override {
    FixedPathSettingsTest::SetUp();
    if (IsSkipped()) return;
    support::write_group_file("one:x:40001:\ntwo:x:40002:\nMixed:x:40002:\nother:x:40003:\nprimary:x:" +
                              std::to_string(::getgid()) + ":\n");
  }

  // Whether the lines below the header are kept.
  bool is_kept(const std::string &header) {
    const Entries kept = load(header + "\nA=1\n");
    EXPECT_TRUE(kept.empty() || kept == Entries({grouped("A", "1")})) << header;
    return !kept.empty();
  }
};

// A test in which the process seems to be in the groups 40001 and 40002.
class SettingsGroupsMember : public SettingsGroups {
 protected:
  void SetUp() override {
    SettingsGroups::SetUp();
    pretended_groups = &groups_;
  }
  void TearDown() override {
    pretended_groups = nullptr;
    getgroups_fails = false;
    SettingsGroups::TearDown();
  }

  std::vector<gid_t> groups_ = {40001, 40002};
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
}

TEST_F(SettingsGroupsMember, ReadsTheLongestListThatTheKernelAllows) {
  groups_.assign(65536, 40003);
  groups_.back() = 40001;
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

// The code blocks behind the heading.
std::vector<std::string> blocks_of_the_guide(const std::string &heading) {
  const std::string fence = "```\n";
  std::string text = support::read_file(ZORVCRT_SOURCE_DIR "/docs/settings.md");
  text.erase(0, text.find(heading));
  text.erase(text.find("\n## For"));
  std::vector<std::string> blocks;
  for (std::size_t start = text.find(fence); start != std::string::npos; start = text.find(fence, start)) {
    const std::size_t end = text.find(fence, start += fence.size());
    blocks.push_back(text.substr(start, end - start));
    start = end + fence.size();
  }
  return blocks;
}

TEST_F(SettingsGroupsMember, TheExampleOfTheGuideIsTrue) {
  const std::vector<std::string> blocks = blocks_of_the_guide("## A worked example");
  ASSERT_EQ(blocks.size(), 4U);
  support::write_group_file("dba:x:40001:\n");
  support::write_file("/usr/local/zorv/var/conf/sys/quor.conf", blocks[0]);
  support::write_file("/usr/local/zorv/var/conf/sys/quor.d/10-site.conf", blocks[1]);
  support::write_file(std::string(support::kPrivateHome) + "/.ZORVrcs", blocks[2]);
  support::make_link("/usr/local/zorv/sys/lib/libquor.so.8", "/usr/local/zorv/sys/lib/libquor.so");
  support::CapturedDescriptor output(1);
  QuorConfPrint();
  EXPECT_EQ(output.text(), blocks[3]);
}

TEST_F(SettingsGroups, AsksTheSystemForTheSupplementaryGroups) {
  std::vector<gid_t> before(static_cast<std::size_t>(::getgroups(0, nullptr)));
  ::getgroups(static_cast<int>(before.size()), before.data());
  const gid_t one = 40001;
  if (::setgroups(1, &one) != 0) GTEST_SKIP() << "supplementary groups cannot be set";
  EXPECT_TRUE(is_kept("[GROUP:one]"));
  EXPECT_FALSE(is_kept("[GROUP:two]"));
  EXPECT_EQ(::setgroups(0, nullptr), 0);
  EXPECT_FALSE(is_kept("[GROUP:one,two,other,primary]"));
  EXPECT_EQ(::setgroups(before.size(), before.data()), 0);
}

TEST_F(SettingsGroupsMember, UserAndPrimaryGroupGiveNoMembership) {
  groups_.clear();
  EXPECT_FALSE(is_kept("[GROUP:primary]"));
  EXPECT_FALSE(is_kept("[GROUP:one,two,other]"));
}

}  // namespace
