// The conversions without memory.
#include <cstring>

#include "Base64.h"
#include "allocation_walk.hpp"
#include "intconv.h"
#include "realconv.h"
#include "utf.h"
#include "uu.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::QuietCall;
using faults::Text;

char area[256];

void encode(Fault &fault) {
  char *out = area;
  const uint32_t length = fault.during([&] { return ZfxBase64Encode("data", 4, &out); });
  const Text text(out);
  EXPECT_EQ(out == nullptr, fault.struck());
  EXPECT_EQ(length, fault.struck() ? 0U : 8U);
}

// Decodes text that is mostly foreign, so that the block is cut to what came out of it.
void decode(Fault &fault) {
  constexpr char kText[] = "ZGF0YQ....................................................";
  void *out = area;
  const uint32_t length = fault.during([&] { return ZfxBase64Decode(kText, sizeof kText - 1, &out); });
  const Text data(static_cast<char *>(out));
  if (out == nullptr) {
    EXPECT_TRUE(fault.struck());
    EXPECT_EQ(length, 0U);
  } else {
    EXPECT_EQ(length, 4U) << "a block that cannot be cut is as good";
    EXPECT_STREQ(data.get(), "data");
  }
}

void convert_units(Fault &fault) {
  constexpr uint16_t kUnits[] = {0x41, 0xE4, 0x20AC};
  char *out = area;
  const int32_t length = fault.during([&] { return Ucs2ToUtf8(kUnits, 3, &out); });
  const Text text(out);
  EXPECT_EQ(out == nullptr, fault.struck());
  EXPECT_EQ(length, fault.struck() ? 0 : 6);
}

constexpr FaultedCall kFaulted[] = {
    {"Ucs2ToUtf8", "Text", convert_units},
    {"ZfxBase64Decode", "Data", decode},
    {"ZfxBase64Encode", "Data", encode},
};

const QuietCall kQuiet[] = {
    {"intconv_atoi32s", [] { EXPECT_EQ(intconv_atoi32s("-12", 10, 0), -12); }},
    {"intconv_atoi32u", [] { EXPECT_EQ(intconv_atoi32u("x", 10, 12), 12U); }},
    {"intconv_atoi64s", [] { EXPECT_EQ(intconv_atoi64s("-12", 10, 0), -12); }},
    {"intconv_atoi64u", [] { EXPECT_EQ(intconv_atoi64u("12", 10, 0), 12U); }},
    {"intconv_i64utoa", [] { intconv_i64utoa(12, 10, area); }},
    {"intconv_isdigit", [] { EXPECT_NE(intconv_isdigit('1', 10, nullptr), 0); }},
    {"realconv_atof", [] { EXPECT_EQ(realconv_atof("0.5", 0), 0.5); }},
    {"realconv_ftoa", [] { realconv_ftoa(area, sizeof area, 0.5); }},
    {"zfx_uudecode", [] { EXPECT_EQ(zfx_uudecode("#86)C\n", 0, area, sizeof area), 0); }},
    {"zfx_uuencode", [] { EXPECT_EQ(zfx_uuencode("abc", 3, area, sizeof area), 0); }},
};

struct ConvWithoutMemory : ::testing::TestWithParam<FaultedCall> {};

TEST_P(ConvWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ConvWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct ConvFrugal : ::testing::TestWithParam<QuietCall> {};

TEST_P(ConvFrugal, TakesNoMemory) {
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ConvFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(ConvMemoryFaults, DecodeATextForWhichThereIsABlockWhereThereIsNoneForItsLimit) {
  const std::string text(20000, 'Q');
  for (const std::size_t memory : {15008U, 14999U}) {
    void *out = area;
    uint32_t length = 0;
    {
      const support::LimitedAllocator allocator(memory);
      length = ZfxBase64Decode(text.c_str(), 100000, &out);
    }
    const Text data(static_cast<char *>(out));
    EXPECT_EQ(length, memory < 15000 ? 0U : 15000U);
    EXPECT_EQ(out == nullptr, memory < 15000);
  }
}

TEST(ConvMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("conv"));
}

}  // namespace
