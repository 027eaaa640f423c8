#include <gtest/gtest.h>
#include <unistd.h>

#include "../os/user_database.hpp"
#include "private_root.hpp"
#include "run.hpp"

namespace {

using support::run_zorvcrt;

class WhoamiCommand : public user_database::UserDatabaseTest {};

TEST_F(WhoamiCommand, PrintsUserGroupsHostAndFolder) {
  know_user_as("somebody");
  support::write_group_file("primary:x:4711:\nother:x:17:somebody\n");
  char host[256] = "";
  ASSERT_EQ(::gethostname(host, sizeof host), 0);
  const auto outcome = run_zorvcrt({"whoami"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "user\tsomebody\ngroups\tprimary other\nhost\t" + std::string(host) +
                                "\nfolder\t" ZORVCRT_BINARY_DIR "/tools\n");
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(run_zorvcrt({"whoami", "--output", "json"}).output,
            "{\"user\":\"somebody\",\"groups\":[\"primary\",\"other\"],\"host\":\"" + std::string(host) +
                "\",\"folder\":\"" ZORVCRT_BINARY_DIR "/tools\"}\n");
}

TEST_F(WhoamiCommand, ReportsAGroupWithoutAName) {
  know_user_as("somebody");
  support::write_group_file("other:x:17:somebody\n");
  const auto outcome = run_zorvcrt({"whoami"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.output.find("groups\tother\n"), std::string::npos);
  EXPECT_EQ(outcome.errors, "zorvcrt whoami: ZfxGetUserGroups line 113: Error #0 from getgrgid()\n");
}

TEST(Whoami, RefusesOperandsAsMisuse) {
  EXPECT_EQ(run_zorvcrt({"whoami", "root"}).status, 2);
}

}  // namespace
