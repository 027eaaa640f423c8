// The proof for calls of the system: a table of calls of the library, each of which is made again and again,
// with the first of its system calls failing in every way that it can, then the second and so on until none
// is left to fail, and then all over with every one failing from there on.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "failing_allocator.hpp"
#include "failing_calls.hpp"
#include "files.hpp"
#include "rows.hpp"

namespace faults {

/// The failure that a scenario has to bear.
class CallFault {
 public:
  CallFault() = default;
  CallFault(std::size_t first, std::size_t way, bool persistent, support::CallsOf whose)
      : first_(first), way_(way), persistent_(persistent), whose_(whose) {}

  /// Makes the call under the failure; gives its result.
  template <class Call>
  decltype(auto) during(Call call) {
    const Ordered ordered(*this);
    return call();
  }

  /// Whether a system call has failed, or this one has.
  [[nodiscard]] bool struck() const { return !function_.empty(); }
  [[nodiscard]] bool struck(std::string_view function) const { return function_ == function; }
  [[nodiscard]] std::string_view function() const { return function_; }

  /// The errno of the first failure, or support::kShort.
  [[nodiscard]] int error() const { return error_; }
  [[nodiscard]] bool is_last_way() const { return way_ + 1 >= ways_; }
  [[nodiscard]] bool is_persistent() const { return persistent_; }

 private:
  struct Ordered {
    explicit Ordered(CallFault &fault)
        : of(fault), calls(fault.first_, fault.way_, fault.persistent_, fault.whose_) {}
    ~Ordered() {
      const int number = errno;
      if (calls.stop()) {
        of.function_ = calls.function();
        of.error_ = calls.error();
        of.ways_ = calls.ways();
      }
      errno = number;
    }
    Ordered(const Ordered &) = delete;
    Ordered &operator=(const Ordered &) = delete;
    CallFault &of;
    support::FailingCalls calls;
  };

  std::size_t first_ = 0;
  std::size_t way_ = 0;
  bool persistent_ = false;
  support::CallsOf whose_ = support::CallsOf::kThread;
  std::string_view function_;
  int error_ = 0;
  std::size_t ways_ = 0;
};

using SystemCall = Row<CallFault>;

/// Makes the call once; false when it had nothing left to fail.
inline bool run_scenario(const SystemCall &call, CallFault &fault) {
  const int descriptors = support::open_descriptors();
  const long blocks = support::live_blocks();
  call.scenario(fault);
  const long blocks_left = support::live_blocks() - blocks;
  const int descriptors_left = support::open_descriptors() - descriptors;
  const std::string where = std::string(fault.function()) + " with " + std::to_string(fault.error());
  if (!call.may_keep_blocks) {
    EXPECT_EQ(blocks_left, 0) << "blocks are left behind after " << where;
  }
  EXPECT_EQ(descriptors_left, 0) << "descriptors are left behind after " << where;
  return fault.struck();
}

/// Orders every failure that the call can meet, itself or in the child that it starts.
inline void walk(const SystemCall &call, support::CallsOf whose = support::CallsOf::kThread) {
  constexpr std::size_t kMost = 1000;
  std::size_t orders = 0;
  for (const bool persistent : {false, true}) {
    CallFault none;
    call.scenario(none);  // lets the C library make what it keeps
    bool struck = true;
    for (std::size_t first = 1; struck; ++first) {
      ASSERT_LT(first, kMost) << "the call never succeeds";
      for (std::size_t way = 0;; ++way) {
        const ::testing::ScopedTrace trace(
            __FILE__, __LINE__,
            "call " + std::to_string(first) + (persistent ? " on" : "") + ", way " + std::to_string(way));
        CallFault fault(first, way, persistent, whose);
        struck = run_scenario(call, fault) && !::testing::Test::HasFailure();
        orders += struck ? 1 : 0;
        if (!struck || persistent || fault.is_last_way()) break;
      }
    }
  }
  EXPECT_GT(orders, 0U) << "the call asks nothing of the system";
  ::testing::Test::RecordProperty("ordered_failures", static_cast<int>(orders));
}

}  // namespace faults
