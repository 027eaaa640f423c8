// What the library takes from processors that are not at hand. The answers of the processor and of the
// operating system are the test's own, and the source is compiled into it with them.
#include "wide_registers.hpp"

#include <cpuid.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

constexpr uint32_t kAllKept = 0xE7;  // bits of the first extended control register
constexpr uint32_t kWithout512 = 0x07;
constexpr uint32_t kWithout256 = 0x03;
constexpr uint32_t kAllOperations = bit_AVX2 | bit_AVX512F | bit_AVX512BW;

struct Processor {
  uint32_t last_leaf = 7;
  uint32_t tells_state = bit_OSXSAVE;  // the third word of leaf 1
  uint32_t kept = kAllKept;
  uint32_t operations = kAllOperations;  // the second word of leaf 7
};

Processor processor;
int questions = 0;

int answer(uint32_t leaf, uint32_t *a, uint32_t *b, uint32_t *c, uint32_t *d) {
  ++questions;
  if (leaf > processor.last_leaf) return 0;
  *a = *d = 0;
  *b = leaf == 7 ? processor.operations : 0;
  *c = leaf == 1 ? processor.tells_state : 0;
  return 1;
}

int answer_part(uint32_t leaf, uint32_t part, uint32_t *a, uint32_t *b, uint32_t *c, uint32_t *d) {
  EXPECT_EQ(part, 0U);
  return answer(leaf, a, b, c, d);
}

uint32_t kept_state_of_the_test(uint32_t &high) {
  EXPECT_NE(processor.tells_state & bit_OSXSAVE, 0U) << "an illegal instruction";
  high = 0;
  return processor.kept;
}

}  // namespace

#define __get_cpuid answer
#define __get_cpuid_count answer_part
#define __asm__(...) low = kept_state_of_the_test(high)
#include "../../src/foundation/wide_registers.cpp"
#undef __asm__

namespace {

using zorvcrt::WideRegisters;

struct Case {
  const char *name;
  Processor processor;
  WideRegisters expected;
};

const Case kCases[] = {
    {"All", {}, WideRegisters::kOf512Bits},
    {"NoQuestions", {.last_leaf = 0}, WideRegisters::kMissing},
    {"NoFurtherQuestions", {.last_leaf = 6}, WideRegisters::kMissing},
    {"NoStateIsTold", {.tells_state = ~uint32_t{bit_OSXSAVE}}, WideRegisters::kMissing},
    {"HalvesAreNotKept", {.kept = kWithout256}, WideRegisters::kMissing},
    {"ThirdPartsAreNotKept", {.kept = kWithout512}, WideRegisters::kOf256Bits},
    {"MasksAreNotKept", {.kept = kAllKept - 0x20}, WideRegisters::kOf256Bits},
    {"UpperHalvesAreNotKept", {.kept = kAllKept - 0x40}, WideRegisters::kOf256Bits},
    {"FurtherRegistersAreNotKept", {.kept = kAllKept - 0x80}, WideRegisters::kOf256Bits},
    {"NoOperations", {.operations = ~uint32_t{kAllOperations}}, WideRegisters::kMissing},
    {"OperationsOn256Bits", {.operations = bit_AVX2}, WideRegisters::kOf256Bits},
    {"NoOperationsOnBytes", {.operations = bit_AVX2 | bit_AVX512F}, WideRegisters::kOf256Bits},
    {"OperationsOnBytesOnly", {.operations = bit_AVX2 | bit_AVX512BW}, WideRegisters::kOf256Bits},
};

void PrintTo(const Case &row, std::ostream *out) {
  *out << row.name;
}

class WideRegistersOf : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override { processor = GetParam().processor; }
  static void forget() { zorvcrt::wide_registers = WideRegisters::kNotAsked; }
};

TEST_P(WideRegistersOf, AreThoseThatProcessorAndSystemHave) {
  forget();
  EXPECT_EQ(zorvcrt::ask_for_wide_registers(), GetParam().expected);
  EXPECT_EQ(zorvcrt::wide_registers, GetParam().expected);
}

TEST_P(WideRegistersOf, AreAskedForOnce) {
  for (const WideRegisters wanted : {WideRegisters::kOf256Bits, WideRegisters::kOf512Bits}) {
    forget();
    EXPECT_EQ(zorvcrt::has_registers(wanted), GetParam().expected >= wanted);
    questions = 0;
    EXPECT_EQ(zorvcrt::has_registers(wanted), GetParam().expected >= wanted);
    EXPECT_EQ(questions, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Processor, WideRegistersOf, ::testing::ValuesIn(kCases),
                         ::testing::PrintToStringParamName());

}  // namespace
