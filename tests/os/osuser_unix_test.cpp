#include "osuser_unix.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "user_database.hpp"

namespace {

bool no_area_suffices = false;

}  // namespace

// Takes the place of the system's for the library, too.
extern "C" int getpwuid_r(uid_t /*id*/, passwd *entry, char *area, size_t size, passwd **found) {
  *found = nullptr;
  if (no_area_suffices) return ERANGE;
  std::FILE *users = std::fopen("/etc/passwd", "r");
  const int error = ::fgetpwent_r(users, entry, area, size, found);
  std::fclose(users);
  return error == ENOENT ? 0 : error;
}

namespace {

class ZfxGetOSUserTest : public user_database::UserDatabaseTest {};

std::string zero_filled(std::string text, std::size_t size) {
  text.resize(size, '\0');
  return text;
}

TEST_F(ZfxGetOSUserTest, CutsTheLoginNameToTheCapacityAndClearsTheRest) {
  know_user_as("postgres");
  for (std::size_t size = 1; size < 16; ++size) {
    std::string area(size + 1, '?');
    EXPECT_EQ(ZfxGetOSUser(area.data(), static_cast<int64_t>(size), nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(area, zero_filled(std::string("postgres").substr(0, size - 1), size) + "?");
  }
}

TEST_F(ZfxGetOSUserTest, ClearsTheFirstByteOfTheSecondBuffer) {
  know_user_as("somebody");
  char user[32] = "";
  char second[] = "second";
  char message[] = "same";
  EXPECT_EQ(ZfxGetOSUser(user, sizeof user, second, 77, message, sizeof message), 0);
  EXPECT_EQ(std::string(second, sizeof second), std::string("\0econd", 7));
  EXPECT_STREQ(user, "somebody");
  EXPECT_STREQ(message, "same");
}

TEST_F(ZfxGetOSUserTest, FailsWithoutAMessageForAUserWhomTheDatabaseDoesNotKnow) {
  know_nobody();
  char user[] = "before";
  char second[] = "second";
  char message[] = "same";
  EXPECT_EQ(ZfxGetOSUser(user, sizeof user, second, 0, message, sizeof message), -1);
  EXPECT_EQ(std::string(user, sizeof user), std::string(7, '\0'));
  EXPECT_STREQ(second, "");
  EXPECT_STREQ(message, "same");
}

TEST_F(ZfxGetOSUserTest, GivesUpOnAnEntryThatNoAreaHolds) {
  know_user_as("somebody");
  no_area_suffices = true;
  char user[] = "before";
  EXPECT_EQ(ZfxGetOSUser(user, sizeof user, nullptr, 0, nullptr, 0), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_STREQ(user, "");
  no_area_suffices = false;
}

TEST(ZfxGetOSUser, SaysWhichArgumentsAreInvalid) {
  char message[200] = "";
  char second[] = "same";
  EXPECT_EQ(ZfxGetOSUser(nullptr, 0, second, 0, message, sizeof message), -1);
  EXPECT_STREQ(message, "ZfxGetOSUser line 28: Invalid argument(s) vvuserp=(nil) vlusrszi=0");
  EXPECT_STREQ(second, "same");
  EXPECT_EQ(ZfxGetOSUser(nullptr, INT64_MAX, nullptr, 0, message, sizeof message), -1);
  EXPECT_STREQ(message,
               "ZfxGetOSUser line 28: Invalid argument(s) vvuserp=(nil) vlusrszi=9223372036854775807");
  for (const int64_t size : {int64_t{0}, int64_t{-1}, INT64_MIN}) {
    char user[] = "same";
    char expected[200] = "";
    std::snprintf(expected, sizeof expected,
                  "ZfxGetOSUser line 28: Invalid argument(s) vvuserp=%p vlusrszi=%lld",
                  static_cast<void *>(user), static_cast<long long>(size));
    EXPECT_EQ(ZfxGetOSUser(user, size, nullptr, 0, message, sizeof message), -1);
    EXPECT_STREQ(message, expected);
    EXPECT_STREQ(user, "same");
  }
}

TEST(ZfxGetOSUser, BoundsTheMessageToItsArea) {
  const std::string whole = "ZfxGetOSUser line 28: Invalid argument(s) vvuserp=(nil) vlusrszi=0";
  for (std::size_t size = 1; size < whole.size() + 3; ++size) {
    std::string area(size + 1, '?');
    EXPECT_EQ(ZfxGetOSUser(nullptr, 0, nullptr, 0, area.data(), static_cast<int32_t>(size)), -1);
    EXPECT_STREQ(area.c_str(), whole.substr(0, size - 1).c_str());
    EXPECT_EQ(area[size], '?');
  }
  char message[] = "same";
  for (const int32_t size : {0, -1, INT32_MIN}) {
    EXPECT_EQ(ZfxGetOSUser(nullptr, 0, nullptr, 0, message, size), -1);
    EXPECT_STREQ(message, "same");
  }
  EXPECT_EQ(ZfxGetOSUser(nullptr, 0, nullptr, 0, nullptr, 100), -1);
}

}  // namespace
