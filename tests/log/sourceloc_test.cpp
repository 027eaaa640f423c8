#include "sourceloc.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "tls.h"

namespace {

// First in the file, and under ctest in a process of its own: the key is made by threads that race for it.
TEST(ZfxGetSourceLocation, ServesThreadsThatRaceForTheFirstCall) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([i] {
      const std::string function = "f" + std::to_string(i);
      for (int line = 0; line < 200; ++line) {
        EXPECT_EQ(ZfxGetSourceLocation(function.c_str(), "x.c", line),
                  function + "@x.c:" + std::to_string(line));
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
}

TEST(ZfxGetSourceLocation, ShowsFunctionFileNameAndLine) {
  EXPECT_STREQ(ZfxGetSourceLocation("main", "src/a/b.c", 12), "main@b.c:12");
  EXPECT_STREQ(ZfxGetSourceLocation("main", "b.c", INT32_MAX), "main@b.c:2147483647");
  EXPECT_STREQ(ZfxGetSourceLocation("main", "/b.c", INT32_MIN), "main@b.c:-2147483648");
  EXPECT_STREQ(ZfxGetSourceLocation("main", "src/", 0), "main@:0");
  EXPECT_STREQ(ZfxGetSourceLocation("main", "a\\b.c", 0), "main@a\\b.c:0");
}

TEST(ZfxGetSourceLocation, TakesNullForEmpty) {
  EXPECT_STREQ(ZfxGetSourceLocation(nullptr, nullptr, 1), "@:1");
  EXPECT_STREQ(ZfxGetSourceLocation("", "", 1), "@:1");
}

TEST(ZfxGetSourceLocation, UsesTheSameBufferForEveryCallOfAThread) {
  const char *first = ZfxGetSourceLocation("one", "x.c", 1);
  const char *second = ZfxGetSourceLocation("two", "x.c", 2);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "two@x.c:2");
}

TEST(ZfxGetSourceLocation, GivesEachThreadABufferOfItsOwn) {
  const char *own = ZfxGetSourceLocation("main", "x.c", 1);
  std::thread([own] { EXPECT_NE(ZfxGetSourceLocation("other", "x.c", 2), own); }).join();
  EXPECT_STREQ(own, "main@x.c:1");
}

TEST(ZfxGetSourceLocation, CutsTheTextAt1023Characters) {
  for (const std::size_t length : {1016U, 1017U, 1018U, 1019U, 1022U, 1023U, 1024U, 5000U}) {
    const std::string function(length, 'f');
    EXPECT_EQ(ZfxGetSourceLocation(function.c_str(), "x.c", 12), (function + "@x.c:12").substr(0, 1023));
  }
}

TEST(ZfxGetSourceLocation, StaysInBoundsWhenGivenItsOwnResult) {
  const char *result = ZfxGetSourceLocation(std::string(600, 'f').c_str(), "x.c", 1);
  for (int i = 0; i < 5; ++i) {
    result = ZfxGetSourceLocation(result, result, i);
    EXPECT_LE(std::string(result).size(), 1023U);
  }
}

// Last in the file: it must be the first caller in its process to have an effect.
TEST(ZfxGetSourceLocation, GivesAnEmptyTextWhenTheSystemHasNoKeyLeft) {
  std::vector<uint32_t> keys;
  uint32_t key = 0;
  while (keys.size() < 100000 && ZfxCreateTLS(&key, nullptr) == 0) {
    keys.push_back(key);
  }
  const std::string without_key = ZfxGetSourceLocation("main", "x.c", 1);
  for (const uint32_t taken : keys) {
    EXPECT_EQ(ZfxDeleteTLS(taken), 0);
  }
  EXPECT_TRUE(without_key.empty() || without_key == "main@x.c:1") << without_key;
  EXPECT_STREQ(ZfxGetSourceLocation("main", "x.c", 1), "main@x.c:1");
}

}  // namespace
