// Times without memory: none of the room's functions takes any, but where the C library has to read a new
// zone.
#include <ctime>

#include "allocation_walk.hpp"
#include "datedelta.h"
#include "files.hpp"
#include "files_only_test.hpp"
#include "iso8601.h"
#include "rfc2822.h"
#include "timestamps.h"
#include "zdbclock.h"
#include "zorvrcs.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::QuietCall;

constexpr time_t kBase = 1750000000;  // 15 June 2025, a Sunday
constexpr int32_t kDay = 1;
constexpr int32_t kWeek = 2;

// The zone is another one than at the last call, so that the C library makes its texts anew.
void add_a_day(Fault &fault) {
  time_t later = 0;
  uint32_t packed = 0;
  const auto add = [&] { return ZfxDateDelta(kBase, 1, kDay, 0, 6, &later, &packed); };
  {
    const support::EnvironmentVariable zone("TZ", "BBB5");
    EXPECT_EQ(add(), 0);
  }
  const support::EnvironmentVariable zone("TZ", "AAA-1");
  EXPECT_EQ(fault.during(add), 0);
  EXPECT_EQ(later, kBase + 86400);
  EXPECT_EQ(packed, (2025U * 16 + 6) * 32 + 16) << "the same day in all these zones";
  EXPECT_EQ(add(), 0);
}

// A week looks at the settings, which are loaded for it; without memory for them it begins on Monday.
void add_a_week(Fault &fault) {
  const support::EnvironmentVariable no_export("__QUORCONF_NOENV", "1");
  const support::EnvironmentVariable zone("TZ", "UTC0");
  support::write_file("/usr/local/zorv/sys/conf/quor.conf", "QUOR_FIRST_WEEKDAY=SUNDAY\n");
  constexpr time_t kSunday = 1750550400;  // 22 June 2025, seven days behind the base
  constexpr time_t kMonday = 1750032000;  // 16 June 2025, whose week that day ends
  time_t start = 0;
  const auto add = [&] { return ZfxDateDelta(kBase, 1, kWeek, 0, 0, &start, nullptr); };
  EXPECT_EQ(fault.during(add), 0);
  start -= start % 86400;
  EXPECT_TRUE(start == kSunday || (fault.struck() && start == kMonday)) << start;
  QuorConfRemove();
  EXPECT_EQ(add(), 0);
  EXPECT_EQ(start - start % 86400, kSunday);
  QuorConfRemove();
}

constexpr FaultedCall kFaulted[] = {
    {"ZfxDateDelta", "ByAWeek", add_a_week},
    {"ZfxDateDelta", "InANewZone", add_a_day},
};

tm record;
char area[64];

const QuietCall kQuiet[] = {
    {"ZfxDateDelta",
     [] {
       time_t later = 0;
       EXPECT_EQ(ZfxDateDelta(kBase, 1, kDay, 0, 0, &later, nullptr), 0);
     }},
    {"ZfxFormatIso8601", [] { EXPECT_NE(ZfxFormatIso8601(kBase, area, sizeof area), nullptr); }},
    {"ZfxParseIso8601", [] { EXPECT_NE(ZfxParseIso8601("2026-11-15T08:38:12", 19, &record), 0U); }},
    {"ZfxParseRfc2822", [] { EXPECT_NE(ZfxParseRfc2822("Sun, 15 Nov 2026 08:38:12 GMT", 29, &record), 0U); }},
    {"ZfxParseTimestamp", [] { ZfxParseTimestamp("2026-11-15T08:38:12", 19, &record); }},
    {"ZfxTimeToUTC",
     [] {
       uint64_t seconds = 1750000000;
       ZfxTimeToUTC(&seconds, &record);
     }},
    {"ZfxTimestampToUTC", [] { ZfxTimestampToUTC(&record, "+0100"); }},
    {"fphrtime", [] { EXPECT_NE(fphrtime(), 0U); }},
    {"fphrtimms", [] { EXPECT_NE(fphrtimms(), 0U); }},
    {"pphrtimediff",
     [] {
       ZfxHrTimeDiff difference = {};
       pphrtimediff(&difference, 2, 1);
     }},
};

struct TimeWithoutMemory : faults::FilesOnlyTest, ::testing::WithParamInterface<FaultedCall> {};

TEST_P(TimeWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, TimeWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct TimeFrugal : ::testing::TestWithParam<QuietCall> {};

TEST_P(TimeFrugal, TakesNoMemory) {
  const support::EnvironmentVariable zone("TZ", "AAA-1");
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, TimeFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(TimeMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("time"));
}

}  // namespace
