#include "usergroups_unix.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "next_function.hpp"
#include "user_database.hpp"

namespace {

// Answers of getgrouplist() instead of the truth: for the count and for the ids.
struct GroupListAnswer {
  bool given = false;
  int result = -1;
  int error = 0;
  int groups = 0;
};
GroupListAnswer to_count;
GroupListAnswer to_ids;

int given_answer(const GroupListAnswer &answer, int *groups) {
  *groups = answer.groups;
  errno = answer.error;
  return answer.result;
}

}  // namespace

// Takes the place of the C library's for the whole program.
extern "C" int getgrouplist(const char *user, gid_t group, gid_t *ids, int *groups) {
  if (ids == nullptr && to_count.given) return given_answer(to_count, groups);
  if (ids != nullptr && to_ids.given) return given_answer(to_ids, groups);
  static const auto next =
      support::next_function<int (*)(const char *, gid_t, gid_t *, int *)>("getgrouplist");
  return next(user, group, ids, groups);
}

namespace {

using Names = std::vector<std::string>;

class ZfxGetUserGroupsTest : public user_database::UserDatabaseTest {
 protected:
  void SetUp() override {
    UserDatabaseTest::SetUp();
    if (!IsSkipped()) know_user_as("somebody");
  }
  void TearDown() override {
    to_count = {};
    to_ids = {};
    UserDatabaseTest::TearDown();
  }

  // Asks for the groups and tells their names; result and message are kept.
  Names names(bool with_message = true) {
    std::strcpy(message, "same");
    char **list = &unrelated;
    int32_t count = 77;
    errno = 0;
    result = ZfxGetUserGroups(&list, &count, with_message ? message : nullptr, sizeof message);
    Names names;
    for (char **name = list; name != nullptr && *name != nullptr; ++name) {
      names.emplace_back(*name);
    }
    has_list = list != nullptr;
    EXPECT_EQ(count, static_cast<int32_t>(names.size()));
    ZfxFreeUserGroups(list);
    return names;
  }

  char *unrelated = nullptr;
  char message[200] = "";
  int32_t result = 77;
  bool has_list = false;
};

TEST_F(ZfxGetUserGroupsTest, ListsThePrimaryGroupAndTheOthersByName) {
  support::write_group_file("other:x:1:nobody\nsecond:x:2:somebody\nprimary:x:4711:\nthird:x:3:x,somebody\n");
  EXPECT_EQ(names(), (Names{"primary", "second", "third"}));
  EXPECT_EQ(result, 0);
  EXPECT_STREQ(message, "same");
  EXPECT_EQ(names(false), (Names{"primary", "second", "third"}));
}

TEST_F(ZfxGetUserGroupsTest, ListsHundredsOfGroupsOneOfThemWithThousandsOfMembers) {
  std::string members = "somebody";
  for (int i = 0; i < 5000; ++i) {
    members += ",member" + std::to_string(i);
  }
  std::string groups = "primary:x:4711:\n";
  Names expected = {"primary"};
  for (int i = 0; i < 300; ++i) {
    expected.push_back("group" + std::to_string(i));
    groups +=
        expected.back() + ":x:" + std::to_string(5000 + i) + ":" + (i == 200 ? members : "somebody") + "\n";
  }
  support::write_group_file(groups);
  EXPECT_EQ(names(), expected);
}

TEST_F(ZfxGetUserGroupsTest, LeavesOutAGroupWithoutANameAndReportsTheLast) {
  support::write_group_file("second:x:2:somebody\n");
  EXPECT_EQ(names(), (Names{"second"}));
  EXPECT_EQ(result, 0);
  EXPECT_STREQ(message, "ZfxGetUserGroups line 113: Error #0 from getgrgid()");
  EXPECT_EQ(names(false), (Names{"second"}));
  EXPECT_EQ(result, 0);
}

TEST_F(ZfxGetUserGroupsTest, GivesAnEmptyListWhenNoGroupHasAName) {
  support::write_group_file("");
  EXPECT_EQ(names(), Names{});
  EXPECT_EQ(result, 0);
  EXPECT_TRUE(has_list);
}

TEST_F(ZfxGetUserGroupsTest, FailsForAUserWhomTheDatabaseDoesNotKnow) {
  know_nobody();
  EXPECT_EQ(names(), Names{});
  EXPECT_EQ(result, -1);
  EXPECT_FALSE(has_list);
  EXPECT_TRUE(std::string(message).starts_with("ZfxGetUserGroups line 42: Error 0 in getpwuid(): "))
      << message;
  names(false);
  EXPECT_EQ(result, -1);
}

TEST_F(ZfxGetUserGroupsTest, HasNoListWhenThereAreNoGroupsAndNoError) {
  to_count = {true, -1, 0, 0};
  for (const bool with_message : {true, false}) {
    names(with_message);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(has_list);
  }
  EXPECT_STREQ(message, "same");
}

TEST_F(ZfxGetUserGroupsTest, FailsWhenTheGroupsCannotBeCounted) {
  to_count = {true, -1, ENOMEM, 0};
  for (const bool with_message : {false, true}) {
    names(with_message);
    EXPECT_EQ(result, -1);
    EXPECT_FALSE(has_list);
  }
  EXPECT_STREQ(message, "ZfxGetUserGroups line 65: Error #12 from getgrouplist()");
}

TEST_F(ZfxGetUserGroupsTest, FailsWhenTheIdsCannotBeHadUnlessNoMessageIsWanted) {
  support::write_group_file("primary:x:4711:\nroot:x:0:\n");
  to_count = {true, -1, 0, 2};
  to_ids = {true, -1, EIO, 3};  // one more than there is room for
  names(true);
  EXPECT_EQ(result, -1);
  EXPECT_FALSE(has_list);
  EXPECT_STREQ(message, "ZfxGetUserGroups line 83: Error #5 from getgrouplist()");
  EXPECT_EQ(names(false), (Names{"root", "root"}));  // the ids as they stand, which is cleared
  EXPECT_EQ(result, 0);
}

TEST_F(ZfxGetUserGroupsTest, ListsNoMoreThanWasThereWhenTheGroupsBecomeFewer) {
  support::write_group_file("primary:x:4711:\n");
  to_count = {true, -1, 0, 5};
  EXPECT_EQ(names(), (Names{"primary"}));
  EXPECT_EQ(result, 0);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// Lets this process have a little more memory than it has.
class MemoryLimit {
 public:
  explicit MemoryLimit(rlim_t more) {
    std::ifstream sizes("/proc/self/statm");
    rlim_t pages = 0;
    sizes >> pages;
    ::getrlimit(RLIMIT_AS, &before_);
    const rlimit limit = {pages * 4096 + more, before_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
  }
  ~MemoryLimit() { ::setrlimit(RLIMIT_AS, &before_); }
  MemoryLimit(const MemoryLimit &) = delete;
  MemoryLimit &operator=(const MemoryLimit &) = delete;

 private:
  rlimit before_ = {};
};

TEST_F(ZfxGetUserGroupsTest, FailsWhenThereIsNoMemoryForTheIds) {
  to_count = {true, -1, 0, INT32_MAX};
  const MemoryLimit limit(rlim_t{256} << 20U);
  for (const bool with_message : {false, true}) {
    names(with_message);
    EXPECT_EQ(result, -1);
    EXPECT_FALSE(has_list);
  }
  EXPECT_STREQ(message, "ZfxGetUserGroups line 83: Error #12 from getgrouplist()");
}

TEST_F(ZfxGetUserGroupsTest, FailsWhenThereIsNoMemoryForTheListUnlessNoMessageIsWanted) {
  constexpr int kGroups = 50 << 20;  // 200 MiB of ids, 400 MiB of names
  to_count = {true, -1, 0, kGroups};
  to_ids = {true, kGroups, 0, kGroups};
  const MemoryLimit limit(rlim_t{300} << 20U);
  names(true);
  EXPECT_EQ(result, -1);
  EXPECT_FALSE(has_list);
  EXPECT_STREQ(
      message,
      "ZfxGetUserGroups line 96: Out of memory allocating external group names list (52428800 entries)");
  names(false);
  EXPECT_EQ(result, 0);
  EXPECT_FALSE(has_list);
}

#endif

TEST(ZfxGetUserGroups, NeedsAPlaceForTheListAlone) {
  int32_t count = 77;
  errno = 0;
  EXPECT_EQ(ZfxGetUserGroups(nullptr, &count, nullptr, 0), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(ZfxGetUserGroups(nullptr, nullptr, nullptr, 0), -1);
  char **list = nullptr;
  ZfxGetUserGroups(&list, nullptr, nullptr, 0);
  ZfxFreeUserGroups(list);
}

TEST(ZfxFreeUserGroups, IgnoresNull) {
  ZfxFreeUserGroups(nullptr);
}

}  // namespace
