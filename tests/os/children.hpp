// Children in tests: what they print, how they end, and a fork() that can be made to fail. To be included by
// one source file of a test program.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "next_function.hpp"

inline bool fork_fails = false;
inline bool heap_is_closed_to_children = false;
inline bool heap_is_closed = false;

/// Takes the place of the C library's fork() for the whole program.
extern "C" pid_t fork() noexcept {
  if (fork_fails) {
    errno = EAGAIN;
    return -1;
  }
  static const auto next = support::next_function<pid_t (*)()>("fork");
  const pid_t child = next();
  if (child == 0) heap_is_closed = heap_is_closed_to_children;
  return child;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kHeapCanBeClosed = false;  // the heap is the sanitizer's
#else
inline constexpr bool kHeapCanBeClosed = true;
inline constexpr int kUsedTheHeap = 98;

extern "C" void *__libc_malloc(size_t size);
extern "C" void __libc_free(void *block);

/// These take the place of the C library's; calloc() and realloc() stay.
extern "C" void *malloc(size_t size) noexcept {
  if (heap_is_closed) ::_exit(kUsedTheHeap);
  return __libc_malloc(size);
}
extern "C" void free(void *block) noexcept {
  if (heap_is_closed) ::_exit(kUsedTheHeap);
  __libc_free(block);
}
#endif

namespace children {

/// A file in memory for a child to write to or to read from.
class Stream {
 public:
  explicit Stream(const std::string &text = "") : file_(::memfd_create("stream", MFD_CLOEXEC)) {
    EXPECT_EQ(::write(file_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::lseek(file_, 0, SEEK_SET);
  }
  ~Stream() { ::close(file_); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  [[nodiscard]] int get() const { return file_; }
  [[nodiscard]] std::string text() const {
    std::string text;
    char block[4096];
    off_t at = 0;
    for (ssize_t count = 0; (count = ::pread(file_, block, sizeof block, at)) > 0; at += count) {
      text.append(block, static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  int file_;
};

/// A child that waits until it is killed, as a process of this program.
inline pid_t sleeping_child() {
  const pid_t child = ::fork();
  while (child == 0) {
    ::pause();
  }
  return child;
}

/// A child that leaves at once with the exit status.
inline pid_t leaving_child(int status) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(status);
  return child;
}

/// Waits for the child's end and leaves it to be collected.
inline void await_end(pid_t child) {
  siginfo_t information;
  EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOWAIT), 0);
}

inline void end(pid_t child) {
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

/// A handler that does nothing, called every millisecond as long as this lives, so that system calls that
/// wait are interrupted.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    EXPECT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
    set(1000);
  }
  ~Interruptions() { set(0); }
  Interruptions(const Interruptions &) = delete;
  Interruptions &operator=(const Interruptions &) = delete;

 private:
  static void set(suseconds_t microseconds) {
    const itimerval period = {{0, microseconds}, {0, microseconds}};
    EXPECT_EQ(::setitimer(ITIMER_REAL, &period, nullptr), 0);
  }
};

/// Whether every child has been collected.
inline bool none_left() {
  return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

/// No test of children leaves one behind, or a core file of one that is meant to crash.
class ChildTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const rlimit no_core = {0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core);
  }
  void TearDown() override {
    fork_fails = false;
    heap_is_closed_to_children = false;
    EXPECT_TRUE(none_left());
  }
};

}  // namespace children
