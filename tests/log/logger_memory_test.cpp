// Logging when the process gets no more memory.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "log_lines.hpp"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsInstrumented = true;
#elif defined(__has_feature)
constexpr bool kIsInstrumented = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsInstrumented = false;
#endif

// Runs the actions in a child process, the second one without memory, and tells the child's exit status.
template <class Prepare, class Act>
int status_without_memory(Prepare prepare, Act act) {
  const pid_t child = ::fork();
  if (child == 0) {
    prepare();
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_AS, &none);
    for (std::size_t size = std::size_t{1} << 30; size != 0; size = size > 4096 ? size / 2 : size - 8) {
      void *volatile block = nullptr;
      do {
        block = std::malloc(size);
      } while (block != nullptr);
    }
    ::_exit(act());
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class LoggerWithoutMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (kIsInstrumented) GTEST_SKIP() << "a sanitizer's heap ends the process instead";
  }
};

int calls = 0;

TEST_F(LoggerWithoutMemory, DropsALineForACallback) {
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, nullptr, 0);
  Logger_SetCallback(
      logger, [](void *, const char *) { ++calls; }, nullptr);
  const auto log_once = [&] { Logger_LogError(logger, "f@x.c:1", 1, "x"); };
  const auto log_again = [&] {
    Logger_LogError(logger, "f@x.c:1", 1, "x");
    return calls;
  };
  EXPECT_EQ(status_without_memory(log_once, log_again), 1);
  Logger_Delete(logger);
}

TEST_F(LoggerWithoutMemory, CutsALongDebugLineForAFile) {
  log_lines::FileLogger logger;
  logger->timestamps = 0;
  const std::string message(20000, 'x');
  const auto log = [&] {
    Logger_LogDebug(logger, nullptr, "%s", message.c_str());
    return 0;
  };
  EXPECT_EQ(status_without_memory([] {}, log), 0);
  EXPECT_EQ(logger.text(), "[  DEBUG] " + message.substr(0, 8191) + "\n");
}

TEST_F(LoggerWithoutMemory, GivesNoLogger) {
  EXPECT_EQ(status_without_memory([] {}, [] { return Logger_New(1, nullptr, 0) == nullptr ? 0 : 1; }), 0);
}

}  // namespace
