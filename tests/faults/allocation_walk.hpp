// The proof for one room that no allocation failure does harm: a table of calls, each of which is made again
// and again, with its first allocation failing, its second and so on until it succeeds, and then all over
// with every one failing from there on. A second table has the exports that take no memory at all. Together
// they name every export of the room.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "exported_names.hpp"
#include "failing_allocator.hpp"
#include "rows.hpp"

namespace faults {

/// The failure that a scenario has to bear.
class Fault {
 public:
  Fault() = default;
  Fault(std::size_t first, bool persistent) : first_(first), persistent_(persistent) {}

  /// Makes the call under the failure; gives its result.
  template <class Call>
  decltype(auto) during(Call call) {
    const Ordered ordered(*this);
    return call();
  }

  /// Whether an allocation has failed.
  [[nodiscard]] bool struck() const { return struck_; }

  /// Notes a failure that a child process has met.
  void note_struck(bool struck) { struck_ = struck || struck_; }

 private:
  struct Ordered {
    explicit Ordered(Fault &fault) : of(fault), allocator(fault.first_, fault.persistent_) {}
    ~Ordered() { of.struck_ = allocator.stop() || of.struck_; }
    Ordered(const Ordered &) = delete;
    Ordered &operator=(const Ordered &) = delete;
    Fault &of;
    support::FailingAllocator allocator;
  };

  std::size_t first_ = 0;
  bool persistent_ = false;
  bool struck_ = false;
};

using FaultedCall = Row<Fault>;

/// An export that takes no memory, with a call that would show it.
struct QuietCall {
  const char *name;
  void (*call)();
};

inline void PrintTo(const QuietCall &call, std::ostream *out) {
  *out << call.name;
}

inline void run_scenario(const FaultedCall &call, Fault &fault) {
  const long before = support::live_blocks();
  call.scenario(fault);
  if (!call.may_keep_blocks) {
    EXPECT_EQ(support::live_blocks(), before) << "blocks are left behind, or released twice";
  }
}

/// Orders every failure that the call can meet.
inline void walk(const FaultedCall &call) {
  constexpr std::size_t kMost = 5000;
  std::size_t orders = 0;
  for (const bool persistent : {false, true}) {
    Fault none;
    call.scenario(none);  // lets the C library make what it keeps
    for (std::size_t first = 1;; ++first) {
      ASSERT_LT(first, kMost) << "the call never succeeds";
      const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                         "allocation " + std::to_string(first) + (persistent ? " on" : ""));
      Fault fault(first, persistent);
      run_scenario(call, fault);
      if (!fault.struck() || ::testing::Test::HasFailure()) break;
      ++orders;
    }
  }
  EXPECT_GT(orders, 0U) << "the call takes no memory";
  ::testing::Test::RecordProperty("ordered_failures", static_cast<int>(orders));
}

inline void expect_no_allocation(const QuietCall &quiet) {
  quiet.call();
  support::allocations_since_last_call();
  quiet.call();
  EXPECT_EQ(support::allocations_since_last_call(), 0U);
}

/// Owners of what scenarios make: the right release for whatever happens on the way.
template <auto kRelease>
struct Releaser {
  template <class T>
  void operator()(T *object) const {
    kRelease(object);
  }
};
template <class T, auto kRelease>
using Owner = std::unique_ptr<T, Releaser<kRelease>>;
using Text = Owner<char, std::free>;

/// For a call that gives an object of the caller's, or null exactly when memory has run out. What else must
/// hold of the object is looked at by the last argument.
template <auto kRelease, class Make, class Expect>
void expect_made(Fault &fault, Make make, Expect expect) {
  auto *object = fault.during(make);
  const Owner<std::remove_pointer_t<decltype(object)>, kRelease> owner(object);
  EXPECT_EQ(object != nullptr, !fault.struck());
  if (object != nullptr) expect(object);
}

/// The same as a whole scenario.
template <auto kMake, auto kRelease, auto kExpect = [](const void *) {}>
void make(Fault &fault) {
  expect_made<kRelease>(fault, kMake, kExpect);
}

template <class... Tables>
std::set<std::string> names_in(const Tables &...tables) {
  std::set<std::string> names;
  const auto add = [&names](const auto &table) {
    for (const auto &row : table) {
      names.insert(row.name);
    }
  };
  (add(tables), ...);
  return names;
}

}  // namespace faults
