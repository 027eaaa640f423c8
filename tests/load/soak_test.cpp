// The threaded services under a load that goes on: memory, descriptors and threads stay where they were.
// ZORVCRT_SOAK_ROUNDS sets how many rounds follow the ones that warm up (5 without it).
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "files.hpp"
#include "logger.h"
#include "sourceloc.h"
#include "tcpsock.h"
#include "thread.h"
#include "tls.h"
#include "zorvrcs.h"

namespace {

constexpr int kThreads = 16;

int rounds() {
  const char *set = std::getenv("ZORVCRT_SOAK_ROUNDS");
  return set == nullptr ? 5 : std::atoi(set);
}

long running_threads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}
const long kThreadsAtStart = running_threads();

// A thread whose end is known may still be on its way out for a moment.
long threads_that_stay() {
  using namespace std::chrono;
  const auto limit = steady_clock::now() + seconds(10);
  while (running_threads() > kThreadsAtStart && steady_clock::now() < limit)
    std::this_thread::sleep_for(milliseconds(1));
  return running_threads();
}

// What a service may not use up.
struct Holdings {
  long threads = threads_that_stay();
  int descriptors = support::open_descriptors();
  int64_t heap = static_cast<int64_t>(mallinfo2().uordblks + mallinfo2().hblkhd);
  int64_t resident = resident_bytes();

  static int64_t resident_bytes() {
    int64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * 4096;
  }
};

// A freed block that a thread's cache keeps counts as used, so a few KiB come and go. What leaks in every
// call of a round is more than that.
constexpr int64_t kHeapSlack = 64 << 10;
constexpr int64_t kResidentSlack = 4 << 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;  // then freed memory is kept on purpose
#else
constexpr bool kSanitized = false;
#endif

void expect_constant_holdings(const char *service, const std::function<void()> &round) {
  for (int i = 0; i < 3; ++i)
    round();
  const Holdings before;
  for (int i = 0; i < rounds(); ++i)
    round();
  const Holdings after;
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_EQ(after.threads, before.threads);
  if (!kSanitized) {
    EXPECT_LT(after.heap, before.heap + kHeapSlack);
    EXPECT_LT(after.resident, before.resident + kResidentSlack);
  }
  std::printf("soak %-22s %6d rounds: heap %+lld bytes, resident %+lld KiB, descriptors %+d, threads %+ld\n",
              service, rounds(), static_cast<long long>(after.heap - before.heap),
              static_cast<long long>((after.resident - before.resident) / 1024),
              after.descriptors - before.descriptors, after.threads - before.threads);
}

void on_threads(int count, const std::function<void(int)> &work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back(work, i);
  for (std::thread &thread : threads)
    thread.join();
}

long lines_of(const std::string &path) {
  const std::string text = support::read_file(path);
  return std::count(text.begin(), text.end(), '\n');
}

TEST(Soak, LoggersOnSixteenThreads) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  const std::string long_text(10000, 'x');
  expect_constant_holdings("loggers", [&] {
    std::filesystem::remove(path);
    Logger *shared = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
    on_threads(kThreads, [&](int thread) {
      Logger *own = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
      for (int line = 0; line < 100; ++line) {
        Logger_LogInfo(shared, ZfxGetSourceLocation("f", "x.c", line), "thread %d line %d", thread, line);
        Logger_LogDebug(own, nullptr, "%.*s", line * 100, long_text.c_str());
      }
      Logger_Delete(own);
    });
    Logger_Delete(shared);
    ASSERT_EQ(lines_of(path), kThreads * 200);
  });
}

// Closing without lingering keeps a long run from using up the system's ports.
void close_at_once(int32_t socket) {
  const linger no_wait = {1, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &no_wait, sizeof no_wait);
  ZfxCloseSocket(socket);
}

void echo_once(int32_t listener) {
  const int32_t socket = ZfxAccept(listener, nullptr, nullptr);
  ASSERT_GE(socket, 0);
  char text[16];
  const int32_t length = ZfxSocketRead(socket, text, sizeof text);
  ASSERT_GT(length, 0);
  EXPECT_EQ(ZfxSocketWrite(socket, text, static_cast<uint32_t>(length)), length);
  ZfxCloseSocket(socket);
}

void ask_echo(int32_t port, int number) {
  int32_t socket = -1;
  ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &socket), 0);
  EXPECT_GT(ZfxSocketPrintf(socket, "%d", number), 0);
  timeval limit = {30, 0};
  int32_t error = 0;
  EXPECT_EQ(ZfxSocketReadSelect(socket, &limit, &error), 1);
  char answer[16] = "";
  EXPECT_GT(ZfxSocketRead(socket, answer, sizeof answer - 1), 0);
  EXPECT_EQ(answer, std::to_string(number));
  close_at_once(socket);
}

TEST(Soak, SocketsUnderAThousandConnectionsARound) {
  constexpr int kServers = 4;
  constexpr int kConnectionsEach = 250;
  int32_t listener = -1;
  int32_t port = 0;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
  expect_constant_holdings("sockets", [&] {
    on_threads(2 * kServers, [&](int thread) {
      for (int i = 0; i < kConnectionsEach; ++i) {
        thread < kServers ? echo_once(listener) : ask_echo(port, i);
      }
    });
  });
  ZfxCloseSocket(listener);
}

TEST(Soak, SettingsQueriesOnSixteenThreadsAfterTheLoad) {
  const support::TemporaryFolder folder;
  std::string text = "[NONPRIVILEGED]\n";
  for (int i = 0; i < 200; ++i)
    text += "SOAK_" + std::to_string(i) + "=value " + std::to_string(i) + "\n";
  support::write_file(folder / "soak.conf", text);
  const support::EnvironmentVariable developer("__KERNEL_DEVELOPER", (folder / "soak.conf").c_str());
  QuorConfRemove();
  ASSERT_STREQ(QuorConfQuery("SOAK_7", QUOR_LEVEL_ALL), "value 7");
  expect_constant_holdings("settings", [&] {
    on_threads(kThreads, [&](int thread) {
      for (int i = 0; i < 2000; ++i) {
        const int number = (i + thread) % 200;
        const std::string name = "SOAK_" + std::to_string(number);
        ASSERT_EQ(QuorConfQuery(name.c_str(), QUOR_LEVEL_ALL), "value " + std::to_string(number));
      }
    });
  });
  QuorConfRemove();
}

std::atomic<int> values_destroyed = 0;

void destroy_value(void *value) {
  ++values_destroyed;
  std::free(value);
}

// Every thread makes a slot of its own, leaves a value in a slot that all share, and ends.
TEST(Soak, TlsSlotsOfThousandsOfShortThreads) {
  uint32_t shared = 0;
  ASSERT_EQ(ZfxCreateTLS(&shared, destroy_value), 0);
  expect_constant_holdings("thread-local slots", [&] {
    values_destroyed = 0;
    for (int batch = 0; batch < 125; ++batch) {
      on_threads(kThreads, [&](int) {
        uint32_t own = 0;
        ASSERT_EQ(ZfxCreateTLS(&own, destroy_value), 0);
        ASSERT_EQ(ZfxSetTLSValue(own, &own), 0);
        EXPECT_EQ(ZfxGetTLSValue(own), &own);
        ASSERT_EQ(ZfxDeleteTLS(own), 0);
        ASSERT_EQ(ZfxSetTLSValue(shared, std::malloc(100)), 0);
      });
    }
    ASSERT_EQ(values_destroyed, 2000);
  });
  ZfxDeleteTLS(shared);
}

void *wait_for_stop(void *argument) {
  auto *thread = static_cast<ZfxThread *>(argument);
  while (ZfxCheckEvent(thread->stopEvent) == 0)
    std::this_thread::yield();
  ZfxThreadCleanup(thread);
  return nullptr;
}

TEST(Soak, ThreadsThatAreMadeStoppedAndReleased) {
  expect_constant_holdings("threads", [] {
    for (int batch = 0; batch < 20; ++batch) {
      std::array<ZfxThread *, kThreads> threads{};
      for (ZfxThread *&thread : threads) {
        thread = ZfxCreateThread(wait_for_stop, 0);
        ASSERT_NE(thread, nullptr);
      }
      for (ZfxThread *thread : threads) {
        ZfxSetEvent(thread->stopEvent);
        while (ZfxIsThreadFinished(thread) == 0)
          std::this_thread::yield();
        ZfxTerminateThread(thread);
      }
    }
  });
}

}  // namespace
