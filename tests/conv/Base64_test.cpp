#include "Base64.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "zfxmemory.h"

namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encoded(const std::string &data) {
  char *text = nullptr;
  const uint32_t length = ZfxBase64Encode(data.data(), static_cast<uint32_t>(data.size()), &text);
  const std::string result(text, length);
  EXPECT_EQ(std::strlen(text), length);
  EXPECT_EQ(text[length + 1], '\0') << "two zero bytes end the block";
  ZfxMemFree(text);
  return result;
}

std::string decoded(const char *text, std::size_t length) {
  void *block = nullptr;
  const uint32_t count = ZfxBase64Decode(text, static_cast<uint32_t>(length), &block);
  const char *bytes = static_cast<const char *>(block);
  const std::string result(bytes, count);
  EXPECT_EQ(std::string(bytes + count, count / 3 * 3 + 3 - count),
            std::string(count / 3 * 3 + 3 - count, '\0'));
  ZfxMemFree(block);
  return result;
}

std::string decoded(const std::string &text) {
  return decoded(text.data(), text.size());
}

// The definition, bit by bit.
std::string plain_encoded(const std::string &data) {
  std::string text;
  for (std::size_t bit = 0; bit < data.size() * 8; bit += 6) {
    unsigned sextet = 0;
    for (std::size_t i = bit; i < bit + 6; ++i) {
      const auto byte = static_cast<uint8_t>(i / 8 < data.size() ? data[i / 8] : 0);
      sextet = sextet << 1 | (byte >> (7 - i % 8) & 1U);
    }
    text += kAlphabet[sextet];
  }
  while (text.size() % 4 != 0)
    text += '=';
  return text;
}

std::string plain_decoded(const std::string &text) {
  std::vector<bool> bits;
  for (const char c : text) {
    if (c == '=' || c == '\0') break;
    const std::size_t sextet = kAlphabet.find(c);
    if (sextet == std::string::npos) continue;
    for (int bit = 5; bit >= 0; --bit)
      bits.push_back((sextet >> bit & 1) != 0);
  }
  std::string data;
  for (std::size_t start = 0; start + 8 <= bits.size(); start += 8) {
    unsigned byte = 0;
    for (std::size_t i = start; i < start + 8; ++i)
      byte = byte << 1 | (bits[i] ? 1U : 0U);
    data += static_cast<char>(byte);
  }
  return data;
}

TEST(ZfxBase64Encode, PadsTheLastGroup) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("M"), "TQ==");
  EXPECT_EQ(encoded("Ma"), "TWE=");
  EXPECT_EQ(encoded("Man"), "TWFu");
  EXPECT_EQ(encoded("\xFB\xFF\xFE"), "+//+");
}

TEST(ZfxBase64Encode, AgreesWithTheDefinitionAtEveryLength) {
  std::mt19937 random(20261121);
  for (std::size_t size = 0; size <= 300; ++size) {
    std::string data(size, '\0');
    for (char &c : data)
      c = static_cast<char>(random());
    ASSERT_EQ(encoded(data), plain_encoded(data)) << size;
    ASSERT_EQ(decoded(encoded(data)), data) << size;
  }
}

TEST(ZfxBase64Encode, TakesNullAsNoBytesAndNeedsAPlaceForTheResult) {
  char *text = nullptr;
  EXPECT_EQ(ZfxBase64Encode(nullptr, 10, &text), 0U);
  EXPECT_STREQ(text, "");
  ZfxMemFree(text);
  EXPECT_EQ(ZfxBase64Encode("abc", 3, nullptr), 0U);
}

TEST(ZfxBase64Encode, RefusesATextWhoseLengthExceeds32Bits) {
  for (const uint32_t size : {3221225470U, UINT32_MAX}) {
    char *text = nullptr;
    EXPECT_EQ(ZfxBase64Encode("", size, &text), 0U);
    EXPECT_EQ(text, nullptr);
  }
}

TEST(ZfxBase64Decode, SkipsWhatIsNotInTheAlphabet) {
  EXPECT_EQ(decoded("TW\nFu"), "Man");
  EXPECT_EQ(decoded(" T\r\nW\tF-_\x80\xFFu!"), "Man");
}

TEST(ZfxBase64Decode, EndsAtTheFirstPadding) {
  EXPECT_EQ(decoded("=abc"), "");
  EXPECT_EQ(decoded("TWFu=TWFu"), "Man");
  EXPECT_EQ(decoded("TQ==TWFu"), "M");
  EXPECT_EQ(decoded("\n=abc"), "");
}

TEST(ZfxBase64Decode, GivesAByteForTwoSextetsTwoForThreeAndNoneForOne) {
  EXPECT_EQ(decoded("T"), "");
  EXPECT_EQ(decoded("TW"), "M");
  EXPECT_EQ(decoded("TWF"), "Ma");
  EXPECT_EQ(decoded("TWFuT"), "Man");
}

TEST(ZfxBase64Decode, GivesThreeZeroBytesForNothing) {
  for (const std::string text : {"", "=", "=abc"}) {
    void *block = nullptr;
    EXPECT_EQ(ZfxBase64Decode(text.c_str(), static_cast<uint32_t>(text.size()), &block), 0U);
    EXPECT_EQ(std::memcmp(block, "\0\0\0", 3), 0);
    ZfxMemFree(block);
  }
  void *block = nullptr;
  EXPECT_EQ(ZfxBase64Decode(nullptr, 4, &block), 0U);
  EXPECT_EQ(std::memcmp(block, "\0\0\0", 3), 0);
  ZfxMemFree(block);
  EXPECT_EQ(ZfxBase64Decode("TWFu", 4, nullptr), 0U);
}

TEST(ZfxBase64Decode, ReadsNoFurtherThanTheTerminatorOrTheLength) {
  EXPECT_EQ(decoded("TWFuTWFu", 4), "Man");
  const auto text = std::make_unique<char[]>(5);  // a block of its own, so that a read past it shows
  std::memcpy(text.get(), "TWFu", 5);
  EXPECT_EQ(decoded(text.get(), 100000), "Man");
  std::memcpy(text.get(), "TWFuT", 5);
  EXPECT_EQ(decoded(text.get(), 5), "Man");
}

TEST(ZfxBase64Decode, TouchesNoPageBehindTheOneWithTheEndOfTheText) {
  constexpr std::size_t kPage = 4096;
  void *pages = ::mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(pages, MAP_FAILED);
  char *const guard = static_cast<char *>(pages) + kPage;
  ASSERT_EQ(::mprotect(guard, kPage, PROT_NONE), 0);
  for (const std::string text : {"TWFuTQ==", "TQ=", "=", "TWFuTWFuTWFuTWFuTWFuTWFuTWFuTWFuTWFuTWFuTQ=="}) {
    char *const start = guard - text.size();
    std::memcpy(start, text.data(), text.size());
    EXPECT_EQ(decoded(start, 100000), decoded(text)) << text;
  }
  ::munmap(pages, 2 * kPage);
}

TEST(ZfxBase64Decode, GivesMostlyInvalidTextABlockOfItsSize) {
  std::string text(100000, '\n');
  text += "TWFu";
  text.append(100000, ' ');
  EXPECT_EQ(decoded(text), "Man");
}

// A text that needs no more of the block for its limit than a ninth still gets one of its size.
TEST(ZfxBase64Decode, GivesAShortTextUnderAHugeLimitABlockOfItsSize) {
  for (const std::size_t size : {10U, 8191U, 8192U, 8193U, 20000U, 100000U}) {
    const std::string text(size, 'Q');
    for (const uint32_t limit : {8 * 8192U, 1000000U, UINT32_MAX}) {
      if (limit < size) continue;
      void *block = nullptr;
      const uint32_t count = ZfxBase64Decode(text.c_str(), limit, &block);
      EXPECT_EQ(count, size / 4 * 3 + (size % 4 == 0 ? 0 : size % 4 - 1));
      EXPECT_LE(::malloc_usable_size(block), 2 * std::size_t{count} + 64) << size << " under " << limit;
      ZfxMemFree(block);
    }
  }
}

// One below each number of characters up to which a text is looked at first, at it and one beyond; as a limit
// and as the place of an end.
TEST(ZfxBase64Decode, AgreesWithTheDefinitionOnLongTexts) {
  std::mt19937 random(20261122);
  for (const std::size_t limit : {8192U, 16384U, 65536U, 73728U}) {
    for (const std::size_t size : {limit - 1, limit, limit + 1}) {
      std::string text(size, ' ');
      for (char &c : text)
        c = random() % 100 == 0 ? '\n' : kAlphabet[random() % 64];
      const std::string data = plain_decoded(text);
      ASSERT_EQ(decoded(text), data) << size;
      for (const char end : {'\0', '='}) {
        ASSERT_EQ(decoded(text + end + "TWFu"), data) << size;
        ASSERT_EQ(decoded((text + end).c_str(), 9 * size), data) << size;
      }
    }
  }
}

TEST(ZfxBase64Decode, AgreesWithTheDefinitionOnRandomTexts) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 300, ' ');
    const auto rarity = 1 + random() % 100;
    for (char &c : text)
      c = random() % rarity == 0 ? static_cast<char>(random()) : kAlphabet[random() % 64];
    ASSERT_EQ(decoded(text), plain_decoded(text)) << text;
  }
}

}  // namespace
