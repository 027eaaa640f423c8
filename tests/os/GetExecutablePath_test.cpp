#include "GetExecutablePath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>

#include "files.hpp"
#include "next_function.hpp"

namespace {

// What the link to the program reads as, instead of the truth.
const std::string *link_text = nullptr;
bool link_fails = false;

}  // namespace

// Takes the place of the C library's for the whole program.
extern "C" ssize_t readlink(const char *path, char *buffer, size_t size) noexcept {
  if (link_fails) {
    errno = ENOENT;
    return -1;
  }
  if (link_text != nullptr) {
    EXPECT_STREQ(path, "/proc/self/exe");
    const std::size_t count = std::min(size, link_text->size());
    std::memcpy(buffer, link_text->data(), count);
    return static_cast<ssize_t>(count);
  }
  static const auto next = support::next_function<ssize_t (*)(const char *, char *, size_t)>("readlink");
  return next(path, buffer, size);
}

namespace {

class GetExecutablePathTest : public ::testing::Test {
 protected:
  GetExecutablePathTest() : here_(folder_.path()) {}
  void TearDown() override {
    link_text = nullptr;
    link_fails = false;
  }

  // The folder for a program of the name.
  static std::string folder_of(const std::string &program, uint32_t capacity = 8192) {
    link_text = &program;
    std::string area(capacity + 1, '?');
    EXPECT_EQ(GetExecutablePath(area.data(), capacity), area.data());
    link_text = nullptr;
    EXPECT_EQ(area[capacity], '?');
    return area.c_str();
  }
  // The same for a program that the system does not name and the shell started as the text.
  static std::string folder_of_started(const char *started_as, uint32_t capacity = 8192) {
    const support::EnvironmentVariable variable("_", started_as);
    return folder_of("", capacity);
  }
  [[nodiscard]] const std::string &here() const { return folder_.path(); }

 private:
  support::TemporaryFolder folder_;
  support::CurrentFolder here_;
};

TEST_F(GetExecutablePathTest, TellsTheFolderOfThisProgram) {
  char text[4096] = "";
  EXPECT_EQ(GetExecutablePath(text, sizeof text), text);
  EXPECT_EQ(text, std::filesystem::canonical("/proc/self/exe").parent_path().string());
}

TEST_F(GetExecutablePathTest, CutsAnAbsoluteNameAtItsLastSlash) {
  EXPECT_EQ(folder_of("/usr/bin/prog"), "/usr/bin");
  EXPECT_EQ(folder_of("/prog"), "");
  EXPECT_EQ(folder_of("/a//prog"), "/a/");
  EXPECT_EQ(folder_of("/a/"), "/a");
}

TEST_F(GetExecutablePathTest, CutsTheFolderToTheCapacity) {
  EXPECT_EQ(folder_of("/opt/x/bin/tool"), "/opt/x/bin");
  const std::string whole = "/opt/x/bin";
  for (uint32_t capacity = 1; capacity < 14; ++capacity) {
    EXPECT_EQ(folder_of("/opt/x/bin/tool", capacity), whole.substr(0, capacity - 1));
  }
  EXPECT_EQ(folder_of("/opt/x/bin/tool", 4), "/op");
}

TEST_F(GetExecutablePathTest, WritesNothingWithoutAnArea) {
  EXPECT_EQ(GetExecutablePath(nullptr, 100), nullptr);
  char text[] = "same";
  EXPECT_EQ(GetExecutablePath(text, 0), text);
  EXPECT_STREQ(text, "same");
}

TEST_F(GetExecutablePathTest, ReadsUpTo2047BytesOfTheLink) {
  for (const std::size_t length : {2046U, 2047U, 2048U, 5000U}) {
    const std::string folder = "/" + std::string(length - 3, 'f');
    const std::string program = folder + "/p";
    const std::string seen = program.substr(0, 2047);
    EXPECT_EQ(folder_of(program), seen.substr(0, seen.rfind('/')));
  }
}

TEST_F(GetExecutablePathTest, TakesTheCurrentFolderForANameWithoutSlash) {
  EXPECT_EQ(folder_of("prog"), here());
}

TEST_F(GetExecutablePathTest, TakesARelativeNameFromTheCurrentFolderAndKeepsTheSlash) {
  const std::pair<const char *, const char *> cases[] = {
      {"./prog", ""},         {".//prog", ""},        {"bin/prog", "bin/"},     {"bin//prog", "bin/"},
      {"bin///prog", "bin/"}, {"bin/./prog", "bin/"}, {"./bin/prog", "./bin/"}, {"../prog", "../"},
      {"a/b/prog", "a/b/"},   {"a//b/prog", "a//b/"}, {"a/././prog", "a/./"},   {"a//./prog", "a//"},
      {".//./prog", ".//"},   {"bin/", "bin/"},       {"././prog", ""},
  };
  for (const auto &[program, folder] : cases) {
    EXPECT_EQ(folder_of(program), here() + "/" + folder) << program;
  }
}

TEST_F(GetExecutablePathTest, KeepsARelativeFolderAloneWhereTheCurrentOneIsGone) {
  const support::TemporaryFolder parent;
  std::filesystem::create_directory(parent / "gone");
  const support::CurrentFolder gone(parent / "gone");
  std::filesystem::remove(parent / "gone");
  EXPECT_EQ(folder_of("bin/prog"), "bin/");
  EXPECT_EQ(folder_of("./prog"), "");
  EXPECT_EQ(folder_of("prog"), "");
}

TEST_F(GetExecutablePathTest, TakesTheNameThatTheShellUsedForAnEmptyLink) {
  EXPECT_EQ(folder_of_started("/usr/bin/prog"), "/usr/bin");
  EXPECT_EQ(folder_of_started("./prog"), here() + "/");
  EXPECT_EQ(folder_of_started(nullptr), here());
}

TEST_F(GetExecutablePathTest, TakesThatNameOnlyWhenItIsShorterThanTheCapacity) {
  EXPECT_EQ(folder_of_started("/usr/bin/prog", 14), "/usr/bin");
  EXPECT_EQ(folder_of_started("/usr/bin/prog", 13), here().substr(0, 12));
}

TEST_F(GetExecutablePathTest, BoundsThatNameToItsWorkArea) {
  const std::string name = "/" + std::string(5000, 'n') + "/p";
  EXPECT_EQ(folder_of_started(name.c_str()), "");
}

TEST_F(GetExecutablePathTest, TakesTheCurrentFolderWhenTheLinkCannotBeRead) {
  const support::EnvironmentVariable variable("_", "/usr/bin/prog");
  link_fails = true;
  char text[4096] = "";
  GetExecutablePath(text, sizeof text);
  EXPECT_EQ(text, here());
}

}  // namespace
