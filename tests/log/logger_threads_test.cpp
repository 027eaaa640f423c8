// Lines of many threads and processes in one file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "files.hpp"
#include "log_lines.hpp"
#include "logger.h"

namespace {

using log_lines::FileLogger;

constexpr int kWriters = 16;
constexpr int kLines = 60;

// A text that tells of any other text that got into it.
std::string message_of(int writer, int number) {
  const auto length = static_cast<std::size_t>(number * 7919 % 3000 + (number % 20 == 0 ? 30000 : 0));
  return "writer " + std::to_string(writer) + " line " + std::to_string(number) + " " +
         std::string(length, static_cast<char>('a' + writer));
}

void write_lines(Logger *logger, int writer) {
  for (int number = 0; number < kLines; ++number) {
    Logger_LogDebug(logger, "f@x.c:1", "%s", message_of(writer, number).c_str());
  }
}

// Every line is there, whole, and those of one writer are in its order.
void expect_all_lines(const std::string &text, int writers) {
  std::map<int, int> next;
  std::istringstream lines(text);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_GT(line.size(), 50U);
    const int writer = line.back() == ' ' ? -1 : line.back() - 'a';
    const std::size_t name = line.find("writer ");
    ASSERT_NE(name, std::string::npos);
    const int named = std::stoi(line.substr(name + 7));
    ASSERT_TRUE(writer == named || writer == -1);
    ASSERT_TRUE(line.substr(21) == "  DEBUG] f@x.c:1: " + message_of(named, next[named]++));
  }
  EXPECT_EQ(count, writers * kLines);
}

TEST(LoggerThreads, WriteWholeLinesThroughOneLogger) {
  FileLogger logger;
  std::vector<std::thread> threads;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&logger, writer] { write_lines(logger, writer); });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  expect_all_lines(logger.text(), kWriters);
}

TEST(LoggerThreads, WriteWholeLinesThroughALoggerEach) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  std::vector<std::thread> threads;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&path, writer] {
      Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
      write_lines(logger, writer);
      Logger_Delete(logger);
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  expect_all_lines(support::read_file(path), kWriters);
}

TEST(LoggerProcesses, WriteWholeLinesToOneFile) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  std::vector<pid_t> children;
  for (int writer = 0; writer < 3; ++writer) {
    const pid_t child = ::fork();
    if (child == 0) {
      Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
      write_lines(logger, writer);
      Logger_Delete(logger);
      ::_exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  expect_all_lines(support::read_file(path), 3);
}

// A datagram socket in the place of the file keeps the border of every write.
TEST(Logger, HandsALineOverInOneWriteHoweverLongItIs) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  FileLogger logger;
  ASSERT_GE(::dup2(ends[0], Logger_GetLogFileno(logger)), 0);
  for (const std::size_t length : {1U, 4000U, 4096U, 8191U, 20000U, 65534U}) {
    const std::string message(length, 'm');
    Logger_LogDebug(logger, nullptr, "%s", message.c_str());
    std::string datagram(100000, '\0');
    const ssize_t size = ::recv(ends[1], datagram.data(), datagram.size(), MSG_DONTWAIT);
    ASSERT_GT(size, 21);
    datagram.resize(static_cast<std::size_t>(size));
    EXPECT_TRUE(datagram.substr(21) == "  DEBUG] " + message + "\n") << length << ": " << size;
    EXPECT_EQ(::recv(ends[1], datagram.data(), datagram.size(), MSG_DONTWAIT), -1);
  }
  ::close(ends[0]);
  ::close(ends[1]);
}

// The thread hangs in its write until the pipe is read. Cancelled there, it must not take the stream along.
TEST(Logger, FinishesItsLineWhenTheThreadIsCancelled) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  FileLogger logger;
  logger->timestamps = 0;
  ASSERT_GE(::dup2(ends[1], Logger_GetLogFileno(logger)), 0);
  ::close(ends[1]);
  const int capacity = ::fcntl(ends[0], F_SETPIPE_SZ, 4096);
  ASSERT_GT(capacity, 0);
  pthread_t thread{};
  const auto routine = [](void *argument) -> void * {
    Logger_LogDebug(static_cast<Logger *>(argument), nullptr, "%060000d", 1);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, routine, static_cast<Logger *>(logger)), 0);
  char byte = 0;
  ASSERT_EQ(::read(ends[0], &byte, 1), 1);  // from here on the thread is inside its write
  ASSERT_EQ(pthread_cancel(thread), 0);
  std::string text(1, byte);
  while (text.back() != '\n') {
    char block[4096];
    const ssize_t size = ::read(ends[0], block, sizeof block);
    ASSERT_GT(size, 0);
    text.append(block, static_cast<std::size_t>(size));
  }
  pthread_join(thread, nullptr);
  EXPECT_EQ(text.size(), std::string("[  DEBUG] ").size() + 60000 + 1);
  Logger_LogDebug(logger, nullptr, "next");
  char block[64] = "";
  EXPECT_GT(::read(ends[0], block, sizeof block - 1), 0);
  EXPECT_STREQ(block, "[  DEBUG] next\n");
  ::close(ends[0]);
}

// The whole stack is as large as the longest message alone.
TEST(Logger, WritesTheLongestLineOnASmallStack) {
  FileLogger logger;
  logger->timestamps = 0;
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 64 * 1024), 0);
  pthread_t thread{};
  const auto routine = [](void *argument) -> void * {
    Logger_LogDebug(static_cast<Logger *>(argument), nullptr, "%065534d", 1);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, routine, static_cast<Logger *>(logger)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(logger.text().size(), std::string("[  DEBUG] ").size() + 65534 + 1);
}

}  // namespace
