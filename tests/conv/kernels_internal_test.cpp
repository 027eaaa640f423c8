// The inner loops of the encodings exist plain and for wide registers, some of them for two widths: all must
// do the same on every input, of every length and at every address.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Base64_kernels.hpp"
#include "guarded.hpp"
#include "utf_kernels.hpp"
#include "uu_kernels.hpp"
#include "wide_registers.hpp"

namespace {

constexpr std::size_t kLongest = 300;

class Kernels : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!zorvcrt::has_wide_registers()) GTEST_SKIP() << "this machine has no wide registers";
  }
  std::mt19937 random{20261121};
};

// A copy at the given offset from an aligned address, in a block that ends where the content ends.
template <class T>
class Placed {
 public:
  Placed(const std::vector<T> &content, std::size_t offset)
      : block_(new T[offset + content.size()]), begin_(block_.get() + offset) {
    std::copy(content.begin(), content.end(), begin_);
  }
  const T *get() const { return begin_; }

 private:
  std::unique_ptr<T[]> block_;
  T *begin_;
};

std::vector<uint8_t> random_bytes(std::mt19937 &random, std::size_t size) {
  std::vector<uint8_t> bytes(size);
  for (uint8_t &byte : bytes)
    byte = static_cast<uint8_t>(random());
  return bytes;
}

// The loops of Base64 for registers of one width.
struct Base64Form {
  const char *name;
  decltype(zorvcrt::base64_encode_plain) *encode;
  decltype(zorvcrt::base64_decode_plain) *decode;
  decltype(zorvcrt::base64_length_plain) *length;
};

// Those that this machine can run.
std::vector<Base64Form> base64_forms() {
  std::vector<Base64Form> forms{
      {"AVX2", zorvcrt::base64_encode_wide, zorvcrt::base64_decode_wide, zorvcrt::base64_length_wide}};
  if (zorvcrt::has_widest_registers()) {
    forms.push_back({"AVX-512", zorvcrt::base64_encode_widest, zorvcrt::base64_decode_widest,
                     zorvcrt::base64_length_widest});
  }
  return forms;
}

TEST_F(Kernels, EncodeBase64Alike) {
  for (std::size_t n = 0; n <= kLongest; ++n) {
    for (std::size_t offset = 0; offset < 32; ++offset) {
      const Placed<uint8_t> data(random_bytes(random, n), offset);
      const std::size_t count = (n + 2) / 3 * 4;
      std::vector<char> plain(count);
      ASSERT_EQ(zorvcrt::base64_encode_plain(data.get(), n, plain.data()), count);
      for (const Base64Form &form : base64_forms()) {
        std::vector<char> wide(count);
        ASSERT_EQ(form.encode(data.get(), n, wide.data()), count) << form.name;
        ASSERT_EQ(plain, wide) << form.name << ", " << n << " bytes at offset " << offset;
      }
    }
  }
}

// Units of one, two and three bytes in changing shares, the limits among them.
std::vector<uint16_t> random_units(std::mt19937 &random, std::size_t size) {
  static constexpr uint16_t kLimits[] = {0, 0x7F, 0x80, 0x7FF, 0x800, 0xD800, 0xDFFF, 0xFFFF};
  const unsigned mask = (1U << (1 + random() % 16)) - 1;
  std::vector<uint16_t> units(size);
  for (uint16_t &unit : units) {
    const bool any = random() % 4 == 0;
    unit = static_cast<uint16_t>(random() & (any ? mask : 0x7F));
    if (mask > 0xFFF && random() % 16 == 0) unit = kLimits[random() % std::size(kLimits)];
  }
  return units;
}

// A text in which about one character of so many is none of the alphabet.
std::vector<char> random_base64(std::mt19937 &random, std::size_t size, std::size_t rarity) {
  std::vector<char> text(size);
  for (char &c : text) {
    c = zorvcrt::kBase64Alphabet[random() % 64];
    if (rarity != 0 && random() % rarity == 0) c = static_cast<char>(1 + random() % 255);
    if (c == '=') c = '\n';
  }
  return text;
}

// What every form decodes.
void expect_decoded_alike(const char *text, std::size_t n) {
  const std::size_t room = n / 4 * 3 + 2;
  std::vector<uint8_t> plain(room);
  plain.resize(zorvcrt::base64_decode_plain(text, {n, 0}, plain.data()));
  for (const Base64Form &form : base64_forms()) {
    std::vector<uint8_t> wide(room);
    wide.resize(form.decode(text, {n, 0}, wide.data()));
    ASSERT_EQ(plain, wide) << form.name;
  }
}

TEST_F(Kernels, DecodeBase64Alike) {
  for (std::size_t n = 0; n <= kLongest; ++n) {
    for (std::size_t offset = 0; offset < 32; ++offset) {
      for (const std::size_t rarity : {0U, 1U, 2U, 30U, 100U}) {
        const Placed<char> text(random_base64(random, n, rarity), offset);
        SCOPED_TRACE(testing::Message() << n << " at offset " << offset << ", one of " << rarity);
        ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.get(), n));
      }
    }
  }
}

TEST_F(Kernels, DecodeLongBase64Alike) {
  for (int round = 0; round < 200; ++round) {
    const std::size_t n = 1000 + random() % (round % 10 == 0 ? 40000 : 5000);
    const std::vector<char> text = random_base64(random, n, 1 + random() % 200);
    ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), n)) << n;
  }
}

// One below each limit at which the end of a text is looked for, at it and one beyond.
std::vector<std::size_t> lengths_around_chunks() {
  constexpr std::size_t kChunk = zorvcrt::Base64Rest::kChunk;
  std::vector<std::size_t> lengths{0, 1, 63, 64, 65};
  for (const std::size_t limit : {kChunk, kChunk + 64, 2 * kChunk, 2 * kChunk + 64, 3 * kChunk}) {
    for (const std::size_t n : {limit - 1, limit, limit + 1})
      lengths.push_back(n);
  }
  return lengths;
}

// The text ends where a page does, with an end of its own or where the limit says so.
TEST_F(Kernels, DecodeBase64AlikeHoweverMuchOfItIsKnown) {
  const support::GuardedArea area(4 * zorvcrt::Base64Rest::kChunk);
  for (const std::size_t n : lengths_around_chunks()) {
    std::vector<char> content = random_base64(random, n, n % 2 == 0 ? 0 : 100);
    std::replace(content.begin(), content.end(), '=', '+');
    std::vector<uint8_t> plain(n / 4 * 3 + 2);
    plain.resize(zorvcrt::base64_decode_plain(content.data(), {n, 0}, plain.data()));
    const std::size_t beyond = random() % 3 * zorvcrt::Base64Rest::kChunk;
    if (beyond != 0) content.push_back(random() % 2 == 0 ? '=' : '\0');
    const char *text = area.holding(content);
    auto forms = base64_forms();
    forms.push_back({"plain", nullptr, zorvcrt::base64_decode_plain, nullptr});
    for (const std::size_t known : {std::size_t{0}, n / 8, n / 2, n - std::min<std::size_t>(n, 1), n}) {
      for (const Base64Form &form : forms) {
        std::vector<uint8_t> bytes((n + beyond) / 4 * 3 + 2);
        bytes.resize(form.decode(text, {known, n - known + beyond}, bytes.data()));
        ASSERT_EQ(plain, bytes) << form.name << ", " << known << " of " << n << " known";
      }
    }
  }
}

TEST_F(Kernels, FindTheEndOfBase64Alike) {
  const support::GuardedArea area(2 * kLongest);
  for (std::size_t n = 0; n <= kLongest; ++n) {
    std::vector<char> content = random_base64(random, n + random() % 40, 3);
    if (random() % 4 != 0)
      content.back() = random() % 2 == 0 ? '=' : '\0';  // the last byte in front of a guard
    const char *text = area.holding(content);
    const bool ends = !content.empty() && (content.back() == '=' || content.back() == '\0');
    for (const std::size_t limit :
         {std::size_t{0}, n / 2, content.size(), ends ? SIZE_MAX : content.size()}) {
      for (const Base64Form &form : base64_forms()) {
        ASSERT_EQ(form.length(text, limit), zorvcrt::base64_length_plain(text, limit)) << form.name;
      }
    }
  }
}

// Every loop reads the last bytes in front of one guard and writes up to another.
TEST_F(Kernels, TouchNothingBehindTheirAreas) {
  const support::GuardedArea from(2 * kLongest);
  const support::GuardedArea to(4 * kLongest);
  for (std::size_t n = 0; n <= kLongest; ++n) {
    const std::vector<uint8_t> data = random_bytes(random, n);
    const std::size_t characters = (n + 2) / 3 * 4;
    for (const Base64Form &form : base64_forms()) {
      form.encode(from.holding(data), n, to.last(characters));
      std::vector<char> text(to.last(characters), to.last(0));
      std::erase(text, '=');
      auto *const bytes = static_cast<uint8_t *>(static_cast<void *>(to.last(n)));
      ASSERT_EQ(form.decode(from.holding(text), {text.size(), 0}, bytes), n);
      ASSERT_TRUE(std::equal(data.begin(), data.end(), bytes));
    }

    const std::vector<uint16_t> units = random_units(random, n);
    const uint64_t length = zorvcrt::utf8_length_wide(from.holding(units), n);
    zorvcrt::utf8_convert_wide(from.holding(units), n, to.last(length + zorvcrt::kUtf8Slack));
  }
  const std::vector<uint8_t> line = random_bytes(random, zorvcrt::kUuLineBytes);
  char *const encoded = to.last(zorvcrt::kUuLineCharacters);
  zorvcrt::uu_encode_line_wide(from.holding(line), encoded);
  auto *const decoded = static_cast<uint8_t *>(static_cast<void *>(from.last(zorvcrt::kUuLineBytes)));
  ASSERT_TRUE(zorvcrt::uu_decode_line_wide(encoded, decoded));
  ASSERT_TRUE(std::equal(line.begin(), line.end(), decoded));
}

TEST_F(Kernels, TakeEveryCharacterInEveryPlaceForWhatItIs) {
  for (std::size_t place = 0; place < 64; ++place) {
    for (unsigned c = 0; c < 256; ++c) {
      if (c == '=') continue;
      std::vector<char> text(80, 'Q');
      text[place] = static_cast<char>(c);
      ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), text.size())) << c << " at " << place;
    }
  }
}

// One, two and three of them in the same step of 64, wherever they are.
TEST_F(Kernels, SkipSeveralCharactersOfAStepAlike) {
  const std::vector<char> clean = random_base64(random, 80, 0);
  for (std::size_t first = 0; first < 64; ++first) {
    for (std::size_t second = first; second < 64; ++second) {
      std::vector<char> text = clean;
      text[first] = text[second] = '\n';
      ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), text.size())) << first << ", " << second;
      text[random() % 64] = ' ';
      ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), text.size())) << first << ", " << second;
    }
  }
}

// A batch of steps has its limit at 32 of them, and eight are worked out together.
TEST_F(Kernels, SkipCharactersOfAnyNumberOfStepsAlike) {
  for (std::size_t n = 64; n <= 64 * 70; n += 64) {
    for (const std::size_t length : {n - 1, n, n + 1}) {
      const std::vector<char> text = random_base64(random, length, 1 + random() % 60);
      ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), length)) << length;
    }
  }
}

// Lines so long that no step has two line breaks, in the first place, the last and any other.
TEST_F(Kernels, SkipLineBreaksAlike) {
  for (const std::size_t line : {63U, 64U, 65U, 76U, 128U, 1000U}) {
    for (std::size_t start = 0; start <= line; ++start) {
      std::vector<char> text = random_base64(random, std::size_t{64} * 80, 0);
      for (std::size_t place = start; place < text.size(); place += line + 1)
        text[place] = '\n';
      ASSERT_NO_FATAL_FAILURE(expect_decoded_alike(text.data(), text.size())) << line << " from " << start;
    }
  }
}

TEST_F(Kernels, EncodeAndDecodeUuLinesAlike) {
  for (int round = 0; round < 20000; ++round) {
    const std::size_t offset = random() % 32;
    const Placed<uint8_t> data(random_bytes(random, zorvcrt::kUuLineBytes), offset);
    std::vector<char> plain(zorvcrt::kUuLineCharacters);
    std::vector<char> wide(zorvcrt::kUuLineCharacters);
    zorvcrt::uu_encode_line_plain(data.get(), plain.data());
    zorvcrt::uu_encode_line_wide(data.get(), wide.data());
    ASSERT_EQ(plain, wide);

    if (round % 2 == 0) {  // any bytes at all instead of encoded ones
      for (char &c : plain)
        c = static_cast<char>(random());
    }
    const Placed<char> line(plain, offset);
    std::vector<uint8_t> plain_bytes(zorvcrt::kUuLineBytes);
    std::vector<uint8_t> wide_bytes(zorvcrt::kUuLineBytes);
    ASSERT_EQ(zorvcrt::uu_decode_line_plain(line.get(), plain_bytes.data()),
              zorvcrt::uu_decode_line_wide(line.get(), wide_bytes.data()));
    ASSERT_EQ(plain_bytes, wide_bytes);
  }
}

TEST_F(Kernels, ConvertUcs2Alike) {
  for (std::size_t n = 0; n <= kLongest; ++n) {
    for (std::size_t offset = 0; offset < 32; ++offset) {
      const Placed<uint16_t> units(random_units(random, n), offset);
      const uint64_t length = zorvcrt::utf8_length_plain(units.get(), n);
      ASSERT_EQ(zorvcrt::utf8_length_wide(units.get(), n), length);
      std::vector<char> plain(length + zorvcrt::kUtf8Slack);
      std::vector<char> wide(length + zorvcrt::kUtf8Slack);
      ASSERT_EQ(zorvcrt::utf8_convert_plain(units.get(), n, plain.data()), plain.data() + length);
      ASSERT_EQ(zorvcrt::utf8_convert_wide(units.get(), n, wide.data()), wide.data() + length);
      plain.resize(length);
      wide.resize(length);
      ASSERT_EQ(plain, wide) << n << " units at offset " << offset;
    }
  }
}

TEST_F(Kernels, ConvertEveryUnitInEveryPlaceAlike) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    std::vector<uint16_t> units(16, unit % 3 == 0 ? 0x41 : unit % 3 == 1 ? 0x3B1 : 0x20AC);
    units[unit % 16] = static_cast<uint16_t>(unit);
    units[unit / 16 % 16] = static_cast<uint16_t>(unit);
    const uint64_t length = zorvcrt::utf8_length_plain(units.data(), units.size());
    ASSERT_EQ(zorvcrt::utf8_length_wide(units.data(), units.size()), length);
    std::vector<char> plain(length + zorvcrt::kUtf8Slack);
    std::vector<char> wide(length + zorvcrt::kUtf8Slack);
    zorvcrt::utf8_convert_plain(units.data(), units.size(), plain.data());
    zorvcrt::utf8_convert_wide(units.data(), units.size(), wide.data());
    ASSERT_EQ(std::string(plain.data(), length), std::string(wide.data(), length)) << unit;
  }
}

}  // namespace
