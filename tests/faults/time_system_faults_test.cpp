// Dates when the system refuses to tell the local time.
#include <cstdint>
#include <ctime>

#include "call_walk.hpp"
#include "datedelta.h"
#include "files.hpp"

namespace {

using faults::CallFault;
using faults::SystemCall;

void move_by_month(CallFault &fault) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  constexpr int32_t kMonth = 3;
  time_t later = 7;
  uint32_t packed = 7;
  const int32_t result = fault.during([&] { return ZfxDateDelta(0, 1, kMonth, 1, 6, &later, &packed); });
  if (!fault.struck()) {
    EXPECT_EQ(later, 31 * 86400);
    EXPECT_EQ(packed, (1970U * 16 + 2) * 32 + 1);
  } else if (result == -1) {
    EXPECT_EQ(later, 7) << "nothing is stored";
    EXPECT_EQ(packed, 7U);
  } else {
    EXPECT_TRUE((fault.struck("mktime") && later == -1) || packed == 0) << later << " " << packed;
  }
}

constexpr SystemCall kCalls[] = {
    {"ZfxDateDelta", "ByAMonth", move_by_month},
};

struct TimeRefused : ::testing::TestWithParam<SystemCall> {};

TEST_P(TimeRefused, KeepsItsContractWhicheverSystemCallFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, TimeRefused, ::testing::ValuesIn(kCalls), faults::RowName());

}  // namespace
