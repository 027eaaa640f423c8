// The inner loops of the comparison without case exist twice, plain and for wide registers: both must do the
// same on every input, of every length, at every address and in every locale, and touch no page behind a
// text.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "CompareString_kernels.hpp"
#include "guarded.hpp"
#include "locale.hpp"
#include "wide_registers.hpp"

namespace {

constexpr std::size_t kLongest = 140;

class Kernels : public ::testing::TestWithParam<const char *> {
 protected:
  Kernels() : locale_(GetParam()) {}
  void SetUp() override {
    if (!zorvcrt::has_wide_registers()) GTEST_SKIP() << "this machine has no wide registers";
    ASSERT_TRUE(locale_.in_force());
  }

  // Letters, few others; now and then any byte but a zero.
  std::string text(std::size_t size) {
    std::string made(size, '\0');
    for (char &c : made) {
      c = random() % 16 == 0 ? static_cast<char>(1 + random() % 255) : static_cast<char>('Y' + random() % 6);
    }
    return made;
  }

  // The text with the case of letters changed, and often with another byte somewhere.
  std::string like(std::string made) {
    for (char &c : made) {
      if (std::isalpha(static_cast<unsigned char>(c)) != 0 && random() % 2 == 0)
        c = static_cast<char>(c ^ 0x20);
    }
    if (!made.empty() && random() % 2 == 0)
      made[random() % made.size()] = static_cast<char>(1 + random() % 255);
    if (random() % 8 == 0) made.resize(random() % (made.size() + 1));
    return made;
  }

  // Compares two texts that end in front of a guard, the second one so many bytes in front of it.
  void expect_alike(const std::string &a, const std::string &b, std::size_t shift) {
    const char *x = first_.holding(std::string(a.c_str(), a.size() + 1));
    const char *y = second_.holding(std::string(b.c_str(), b.size() + 1) + std::string(shift, 'x'));
    ASSERT_EQ(zorvcrt::compare_wide(x, y, zorvcrt::upper_case_table()), zorvcrt::compare_plain(x, y))
        << a << '\n'
        << b;
    for (const std::size_t limit : {std::size_t{1}, a.size() / 2 + 1, a.size() + 1, a.size() + 40}) {
      ASSERT_EQ(zorvcrt::compare_beginnings_wide(x, y, limit, zorvcrt::upper_case_table()),
                zorvcrt::compare_beginnings_plain(x, y, limit))
          << limit << " of\n"
          << a << '\n'
          << b;
    }
  }

  std::mt19937 random{20261121};

 private:
  support::Locale locale_;
  support::GuardedArea first_{kLongest + 1};
  support::GuardedArea second_{2 * kLongest};
};

TEST_P(Kernels, CompareTextsOfEveryLengthAlike) {
  for (std::size_t n = 0; n <= kLongest; ++n) {
    for (std::size_t shift = 0; shift < 40; ++shift) {
      const std::string a = text(n);
      expect_alike(a, like(a), shift);
    }
  }
}

TEST_P(Kernels, CompareEveryPairOfBytesInALongTextAlike) {
  std::string a = text(40);
  std::string b = a;
  for (int x = 1; x < 256; ++x) {
    for (int y = 1; y < 256; ++y) {
      const std::size_t place = random() % a.size();
      a[place] = static_cast<char>(x);
      b[place] = static_cast<char>(y);
      expect_alike(a, b, 0);
      b[place] = a[place];
    }
  }
}

TEST_P(Kernels, CompareABeginningOfATextThatHasNoEndAlike) {
  const std::string endless = text(100);
  const support::GuardedArea area(endless.size());
  const char *x = area.holding(endless);
  for (std::size_t limit = 1; limit <= endless.size(); ++limit) {
    const char *from = x + endless.size() - limit;
    const std::string other = like(std::string(from, limit));
    ASSERT_EQ(zorvcrt::compare_beginnings_wide(from, other.c_str(), limit, zorvcrt::upper_case_table()),
              zorvcrt::compare_beginnings_plain(from, other.c_str(), limit))
        << limit;
  }
}

INSTANTIATE_TEST_SUITE_P(Locales, Kernels,
                         ::testing::Values("C", "en_US.ISO-8859-1", "tr_TR.ISO-8859-9", "fr_FR.UTF-8"));

// The library asks the processor itself, because the compiler's query would run code when a host starts.
TEST(WideRegisters, AreThoseThatTheCompilersQueryFinds) {
  const bool has_256_bits = __builtin_cpu_supports("avx2") != 0;
  const bool has_512_bits = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0;
  EXPECT_EQ(zorvcrt::has_wide_registers(), has_256_bits);
  EXPECT_EQ(zorvcrt::has_widest_registers(), has_256_bits && has_512_bits);
}

}  // namespace
