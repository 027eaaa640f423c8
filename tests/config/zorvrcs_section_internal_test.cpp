// The hashes of settings' names: whatever it is that tells names apart, they share no more buckets than
// random numbers would, so that thousands of settings load and are found in linear time.
#include "zorvrcs_section.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using zorvcrt::settings::Key;

constexpr std::size_t kNames = 4096;
constexpr std::size_t kBuckets = 2 * kNames;  // as in an index of so many items

// The names of a family, by their numbers.
struct Family {
  const char *name;
  std::string (*text)(std::size_t number);
};

std::string letters(std::size_t number, std::size_t size) {
  std::string text;
  for (; text.size() < size; number /= 26) {
    text += static_cast<char>('A' + number % 26);
  }
  return text;
}

const Family kFamilies[] = {
    {"OfThreeLetters", [](std::size_t number) { return letters(number, 3); }},
    {"OfSevenLetters", [](std::size_t number) { return letters(number, 3) + "NAME"; }},
    {"OfEightLetters", [](std::size_t number) { return "NAMES" + letters(number, 3); }},
    {"OfNineLetters", [](std::size_t number) { return letters(number, 3) + "NUMBER"; }},
    {"OfEveryLength", [](std::size_t number) { return std::string(1 + number, 'N'); }},
    {"Numbered", [](std::size_t number) { return "NAME" + std::to_string(number); }},
    {"NumberedInFront", [](std::size_t number) { return std::to_string(number) + "_OF_MANY_NAMES"; }},
    {"NumberedInTheMiddle",
     [](std::size_t number) { return "ONE_NAME_" + letters(number, 3) + "_OF_MANY_NAMES"; }},
    {"NumberedAtTheEnd", [](std::size_t number) { return "ONE_OF_MANY_NAMES_" + std::to_string(number); }},
    {"OfTwoParts",
     [](std::size_t number) { return letters(number / 64, 8) + letters(number % 64, 8) + "TOGETHER"; }},
};

void PrintTo(const Family &family, std::ostream *out) {
  *out << family.name;
}

class NamesHash : public ::testing::TestWithParam<Family> {};

TEST_P(NamesHash, SpreadsThemOverTheBuckets) {
  std::set<uint64_t> hashes;
  std::map<uint64_t, std::size_t> buckets;
  for (std::size_t number = 0; number < kNames; ++number) {
    const uint64_t hash = Key(GetParam().text(number)).hash;
    hashes.insert(hash);
    ++buckets[hash % kBuckets];
  }
  EXPECT_EQ(hashes.size(), kNames) << "two names have the same hash";
  std::size_t pairs = 0;
  for (const auto &[bucket, count] : buckets) {
    pairs += count * (count - 1) / 2;
  }
  constexpr std::size_t kPairsOfRandomNumbers = kNames * (kNames - 1) / 2 / kBuckets;
  EXPECT_LT(pairs, kPairsOfRandomNumbers * 3 / 2) << "two names of one bucket";
}

INSTANTIATE_TEST_SUITE_P(Names, NamesHash, ::testing::ValuesIn(kFamilies),
                         ::testing::PrintToStringParamName());

}  // namespace
