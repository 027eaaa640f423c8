#include "gets_legacy.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "standard_input.hpp"

namespace {

using standard_input::Input;

TEST(gets_legacy, ReadsLineAfterLineWithoutTheLineFeed) {
  const Input input("first\n\nthird \r\nlast");
  char buffer[64] = "";
  for (const char *line : {"first", "", "third \r", "last"}) {
    EXPECT_EQ(gets_legacy(buffer), buffer);
    EXPECT_STREQ(buffer, line);
  }
  EXPECT_EQ(gets_legacy(buffer), nullptr);
  EXPECT_STREQ(buffer, "");
}

TEST(gets_legacy, GivesNullAtTheEndOfTheInput) {
  const Input input("");
  char buffer[] = "before";
  EXPECT_EQ(gets_legacy(buffer), nullptr);
  EXPECT_STREQ(buffer, "");
}

TEST(gets_legacy, HasNoLimitOfItsOwn) {
  const std::string line(1000000, 'x');
  const Input input(line + "\nnext");
  std::vector<char> buffer(line.size() + 1, '?');
  EXPECT_EQ(gets_legacy(buffer.data()), buffer.data());
  EXPECT_STREQ(buffer.data(), line.c_str());
  EXPECT_EQ(Input::rest(), "next");
}

TEST(gets_legacy, RefusesANullBufferAndLeavesTheInputAlone) {
  const Input input("line\n");
  errno = 0;
  EXPECT_EQ(gets_legacy(nullptr), nullptr);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(Input::rest(), "line\n");
}

TEST(gets_legacy, ReadsWhatComesThroughAPipe) {
  EXPECT_TRUE(standard_input::holds_in_child("one\ntwo", [] {
    char buffer[16] = "";
    return gets_legacy(buffer) == buffer && std::strcmp(buffer, "one") == 0 &&
           gets_legacy(buffer) == buffer && std::strcmp(buffer, "two") == 0 && gets_legacy(buffer) == nullptr;
  }));
}

TEST(gets_legacy, GivesEachThreadWholeLines) {
  std::string text;
  for (int i = 0; i < 4000; ++i) {
    text += "line\n";
  }
  const Input input(text);
  int whole[4] = {};
  std::vector<std::thread> threads;
  for (int &count : whole) {
    threads.emplace_back([&count] {
      char buffer[64] = "";
      while (gets_legacy(buffer) != nullptr) {
        count += std::strcmp(buffer, "line") == 0 ? 1 : 0;
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(whole[0] + whole[1] + whole[2] + whole[3], 4000);
}

void *read_one_line(void *buffer) {
  return gets_legacy(static_cast<char *>(buffer));
}

// Whether nobody holds standard input.
bool input_is_free() {
  if (::ftrylockfile(stdin) != 0) return false;
  ::funlockfile(stdin);
  return true;
}

TEST(gets_legacy, LeavesTheInputToTheOthersWhenItsThreadIsCancelled) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  FILE *const before = std::exchange(stdin, ::fdopen(pipe[0], "r"));
  char buffer[16] = "";
  pthread_t waiting;
  ASSERT_EQ(pthread_create(&waiting, nullptr, read_one_line, buffer), 0);
  while (input_is_free()) {
    ::usleep(1000);  // until it waits for input, which does not come
  }
  EXPECT_EQ(pthread_cancel(waiting), 0);
  void *result = nullptr;
  EXPECT_EQ(pthread_join(waiting, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  ASSERT_TRUE(input_is_free());
  std::fclose(std::exchange(stdin, before));
  ::close(pipe[1]);
}

}  // namespace
