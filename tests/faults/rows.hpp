// A row of the tables of calls that failures are ordered for, by allocation_walk.hpp or by call_walk.hpp, and
// what such rows expect.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace faults {

/// An export under failures: the scenario makes what it needs, makes the call, judges its result, uses the
/// object once more without failures, and releases everything.
template <class Fault>
struct Row {
  const char *name;
  const char *circumstance;
  void (*scenario)(Fault &fault);
  bool may_keep_blocks = false;
};

/// Variables of the environment are never given back, so blocks cannot be counted.
inline constexpr bool kEnvironmentKeepsBlocks = true;

template <class Fault>
void PrintTo(const Row<Fault> &row, std::ostream *out) {
  *out << row.name << "_" << row.circumstance;
}

/// The name of a row as part of a test's name.
struct RowName {
  template <class AnyRow>
  std::string operator()(const ::testing::TestParamInfo<AnyRow> &info) const {
    return ::testing::PrintToString(info.param);
  }
};

/// For a text that may be absent where a failure has struck, and must be right otherwise.
inline void expect_text(const char *name, const char *found, const char *text, bool may_lack) {
  if (found != nullptr || !may_lack) {
    EXPECT_STREQ(found, text) << name;
  }
}

}  // namespace faults
