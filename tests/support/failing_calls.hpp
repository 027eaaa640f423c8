// Failures of the C library's system calls on demand. A test program that includes this header has functions
// of its own in front of open(), read(), fork() and their kin (see tests/CMakeLists.txt); they pass every
// call on until a failure is ordered.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace support {

/// What a failing call leaves behind: an errno value, or this.
inline constexpr int kShort = -1;  // the call works, but moves one byte only

/// Whose calls fail: those of this thread, or those that the children make which it starts by fork().
enum class CallsOf { kThread, kChild };

/// From construction to destruction, or to stop(), the watched call number @p first (from 1) fails in the way
/// number @p way (from 0) that the function has; with @p persistent every later one fails in its first way
/// too.
class FailingCalls {
 public:
  FailingCalls(std::size_t first, std::size_t way, bool persistent, CallsOf whose = CallsOf::kThread);
  ~FailingCalls() { stop(); }
  FailingCalls(const FailingCalls &) = delete;
  FailingCalls &operator=(const FailingCalls &) = delete;

  /// Back to normal. Tells whether a call has failed; the following tell which was the first and how.
  bool stop();
  [[nodiscard]] std::string_view function() const { return function_; }
  [[nodiscard]] int error() const { return error_; }
  [[nodiscard]] std::size_t ways() const { return ways_; }

 private:
  std::string_view function_;
  int error_ = 0;
  std::size_t ways_ = 0;
};

/// Has something happen once, right before this thread's call number @p count (from 1) of the watched
/// function.
class BeforeCall {
 public:
  BeforeCall(std::string_view function, std::size_t count, std::function<void()> action);
  ~BeforeCall();
  BeforeCall(const BeforeCall &) = delete;
  BeforeCall &operator=(const BeforeCall &) = delete;

  [[nodiscard]] bool has_happened() const { return count_ == 0; }

  /// Tells of a call, which is for the functions of failing_calls.cpp.
  void notice(std::string_view function);

 private:
  std::string_view function_;
  std::size_t count_;  // calls still to come, this one included
  std::function<void()> action_;
};

/// Whether calls of the function are watched.
bool is_watched(std::string_view function);

}  // namespace support
