// Numbers from and to text, one number of a random set per step.
#include <array>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "contender.hpp"
#include "intconv.h"
#include "realconv.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_ABSL
#include <absl/strings/charconv.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#endif

namespace {

constexpr std::size_t kNumbers = 1024;
using Texts = std::array<std::string, kNumbers>;
using Area = std::array<char, 64>;

// Integers of all lengths, each as likely as the others.
int64_t random_integer(std::mt19937_64 &random, unsigned bits) {
  const auto magnitude = static_cast<int64_t>((random() >> 1U) >> (63 - 1 - random() % bits));
  return random() % 4 == 0 ? -magnitude : magnitude;
}

Texts integer_texts(unsigned bits) {
  std::mt19937_64 random(20261121);
  Texts texts;
  for (std::string &text : texts) {
    text = std::to_string(random_integer(random, bits));
  }
  return texts;
}

// Half of them prices and measurements, half with all the digits that a binary fraction brings.
double random_real(std::mt19937_64 &random) {
  const auto cents = static_cast<double>(static_cast<int64_t>(random() % 2000000) - 1000000) / 100;
  return random() % 2 == 0 ? cents : cents + static_cast<double>(random() >> 11U) * 0x1p-53;
}

Texts real_texts() {
  std::mt19937_64 random(20261121);
  Texts texts;
  for (std::string &text : texts) {
    Area area;
    const auto end =
        std::to_chars(area.data(), area.data() + area.size(), random_real(random), std::chars_format::fixed);
    text.assign(area.data(), end.ptr);
  }
  return texts;
}

template <class Number>
std::array<Number, kNumbers> numbers_of(const Texts &texts) {
  std::array<Number, kNumbers> numbers{};
  for (std::size_t i = 0; i < kNumbers; ++i) {
    std::from_chars(texts[i].data(), texts[i].data() + texts[i].size(), numbers[i]);
  }
  return numbers;
}

// A contender that reads the numbers one after the other.
template <class Read>
void reader(const char *work, const char *input, const char *name, const Texts &texts, Read read) {
  bench::contender(work, input, name, [=](benchmark::State &state) {
    std::size_t i = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(read(texts[i++ % kNumbers]));
    }
  });
}

template <class Number, class Write>
void writer(const char *work, const char *input, const char *name,
            const std::array<Number, kNumbers> &numbers, Write write) {
  bench::contender(work, input, name, [=](benchmark::State &state) {
    Area area;
    std::size_t i = 0;
    for (auto _ : state) {
      write(area, numbers[i++ % kNumbers]);
      benchmark::DoNotOptimize(area.data());
      benchmark::ClobberMemory();
    }
  });
}

template <class Number>
Number standard_number(const std::string &text) {
  Number number{};
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

bool add_integers_from_text() {
  constexpr char kWork[] = "integers";
  constexpr char kShort[] = "32 bits from text";
  constexpr char kLong[] = "64 bits from text";
  const Texts shorts = integer_texts(31);
  const Texts longs = integer_texts(63);
  reader(kWork, kShort, bench::kOwn, shorts,
         [](const std::string &text) { return intconv_atoi32s(text.c_str(), 10, 0); });
  reader(kWork, kLong, bench::kOwn, longs,
         [](const std::string &text) { return intconv_atoi64s(text.c_str(), 10, 0); });
  reader(kWork, kShort, "charconv", shorts, standard_number<int32_t>);
  reader(kWork, kLong, "charconv", longs, standard_number<int64_t>);
  reader(kWork, kShort, "strtol", shorts,
         [](const std::string &text) { return std::strtol(text.c_str(), nullptr, 10); });
  reader(kWork, kLong, "strtol", longs,
         [](const std::string &text) { return std::strtol(text.c_str(), nullptr, 10); });
#ifdef HAVE_GLIB
  reader(kWork, kLong, "GLib", longs,
         [](const std::string &text) { return g_ascii_strtoll(text.c_str(), nullptr, 10); });
#endif
#ifdef HAVE_ABSL
  reader(kWork, kShort, "Abseil", shorts, [](const std::string &text) {
    int32_t number = 0;
    return absl::SimpleAtoi(text, &number) ? number : 0;
  });
  reader(kWork, kLong, "Abseil", longs, [](const std::string &text) {
    int64_t number = 0;
    return absl::SimpleAtoi(text, &number) ? number : 0;
  });
#endif
  return true;
}

bool add_integers_to_text() {
  constexpr char kWork[] = "integers";
  constexpr char kInput[] = "64 bits to text";
  std::array<uint64_t, kNumbers> numbers{};
  std::mt19937_64 random(20261121);
  for (uint64_t &number : numbers) {
    number = random() >> random() % 64;
  }
  writer(kWork, kInput, bench::kOwn, numbers,
         [](Area &area, uint64_t number) { intconv_i64utoa(number, 10, area.data()); });
  writer(kWork, kInput, "charconv", numbers,
         [](Area &area, uint64_t number) { std::to_chars(area.data(), area.data() + area.size(), number); });
  writer(kWork, kInput, "snprintf", numbers,
         [](Area &area, uint64_t number) { std::snprintf(area.data(), area.size(), "%" PRIu64, number); });
#ifdef HAVE_ABSL
  writer(kWork, kInput, "Abseil", numbers, [](Area &area, uint64_t number) {
    const absl::AlphaNum text(number);
    std::memcpy(area.data(), text.data(), text.size());
  });
#endif
  return true;
}

bool add_reals() {
  constexpr char kWork[] = "reals";
  constexpr char kFrom[] = "from text";
  constexpr char kTo[] = "to text";
  const Texts texts = real_texts();
  reader(kWork, kFrom, bench::kOwn, texts,
         [](const std::string &text) { return realconv_atof(text.c_str(), 0); });
  reader(kWork, kFrom, "charconv", texts, standard_number<double>);
  reader(kWork, kFrom, "strtod", texts,
         [](const std::string &text) { return std::strtod(text.c_str(), nullptr); });
  const auto numbers = numbers_of<double>(texts);
  writer(kWork, kTo, bench::kOwn, numbers,
         [](Area &area, double number) { realconv_ftoa(area.data(), area.size(), number); });
  writer(kWork, kTo, "charconv", numbers,
         [](Area &area, double number) { std::to_chars(area.data(), area.data() + area.size(), number); });
  writer(kWork, kTo, "snprintf", numbers,
         [](Area &area, double number) { std::snprintf(area.data(), area.size(), "%.17g", number); });
#ifdef HAVE_GLIB
  writer(kWork, kTo, "GLib", numbers, [](Area &area, double number) {
    g_ascii_dtostr(area.data(), static_cast<gint>(area.size()), number);
  });
#endif
#ifdef HAVE_ABSL
  reader(kWork, kFrom, "Abseil", texts, [](const std::string &text) {
    double number = 0;
    absl::from_chars(text.data(), text.data() + text.size(), number);
    return number;
  });
#endif
  return true;
}

[[maybe_unused]] const bool added = add_integers_from_text() && add_integers_to_text() && add_reals();

}  // namespace
