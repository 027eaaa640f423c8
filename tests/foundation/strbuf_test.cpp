#include "strbuf.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <strings.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "failing_allocator.hpp"
#include "plain_text.hpp"
#include "zfxmemory.h"

namespace {

struct Destroy {
  void operator()(strbuf *buffer) const { strbuf_destroy(buffer); }
};
using Buffer = std::unique_ptr<strbuf, Destroy>;

Buffer make(int32_t step, const char *text = nullptr) {
  return Buffer(strbuf_create(step, text));
}

std::string text_of(const Buffer &buffer) {
  return {buffer->data, static_cast<std::size_t>(buffer->length)};
}

int32_t length_of(const std::string &text) {
  return static_cast<int32_t>(text.size());
}

// The rules, written down step by step: a new zero-filled block whenever the capacity changes.
class PlainBuffer {
 public:
  explicit PlainBuffer(int step) : step_(step) { set(""); }

  std::vector<char> block;
  int capacity = 0;
  int length = 0;
  int end = 0;

  [[nodiscard]] std::string text() const { return {block.data(), static_cast<std::size_t>(length)}; }

  void set(const std::string &text) {
    const int n = length_of(text);
    if (capacity <= n) {
      capacity = (n / step_ + 1) * step_;
      block.assign(rounded(capacity + 1), '\0');
    } else {
      clear();
    }
    std::copy(text.begin(), text.end(), block.begin());
    finish(n, n);
  }

  void clear() {
    if (length > 0) finish(0, 0);
  }

  void reserve(int n) {
    if (capacity - length > n) return;
    capacity = ((length + n + 1) / step_ + 1) * step_;
    std::vector<char> fresh(rounded(capacity), '\0');
    std::copy_n(block.begin(), length, fresh.begin());
    block = fresh;
    end = length;
  }

  void append(const std::string &text) {
    if (length == 0) return set(text);
    const int n = length_of(text);
    reserve(n);
    if (block.size() <= static_cast<std::size_t>(end + n))
      block.resize(static_cast<std::size_t>(end + n + 1));
    std::copy(text.begin(), text.end(), block.begin() + end);
    finish(length + n, end + n);
  }

  void insert(const std::string &inserted, int position) {
    if (position >= length) append(inserted);
    const auto cut = static_cast<std::size_t>(std::min(position, length));
    const std::string head = text().substr(0, cut);
    const std::string tail = text().substr(cut);
    clear();
    if (!head.empty()) append(head);
    append(inserted);
    if (!tail.empty()) append(tail);
  }

  void trim() {
    const std::string before = text();
    const std::string kept = plain::trimmed(before);
    std::fill_n(block.begin(), before.size(), '\0');
    std::copy(kept.begin(), kept.end(), block.begin());
    length = length_of(kept);
  }

  void drop_front(int n) {
    if (n < 1) return;
    if (n >= length) return clear();
    std::copy(block.begin() + n, block.begin() + length, block.begin());
    finish(length - n, length - n);
  }

 private:
  static std::size_t rounded(int size) { return static_cast<std::size_t>((size + 3) / 4 * 4); }
  void finish(int new_length, int new_end) {
    length = new_length;
    end = new_end;
    block[static_cast<std::size_t>(end)] = '\0';
  }

  int step_;
};

TEST(StrbufCreate, GivesAnEmptyTextInATwentyByteZeroedBlockForStep16) {
  const Buffer buffer = make(16);
  EXPECT_EQ(buffer->length, 0);
  EXPECT_EQ(buffer->capacity, 16);
  EXPECT_EQ(buffer->step, 16);
  EXPECT_EQ(buffer->end, buffer->data);
  EXPECT_EQ(buffer->scratch, nullptr);
  EXPECT_EQ(buffer->scratch_size, 0);
  EXPECT_GE(malloc_usable_size(buffer->data), 20U);
  EXPECT_EQ(std::string(buffer->data, 20), std::string(20, '\0'));
}

TEST(StrbufCreate, HoldsTheInitialText) {
  const Buffer buffer = make(4, "hello");
  EXPECT_STREQ(strbuf_get(buffer.get()), "hello");
  EXPECT_EQ(buffer->capacity, 8);
}

TEST(StrbufCreate, CountsAStepBelowOneAsOne) {
  for (const int32_t step : {0, -1, INT_MIN}) {
    const Buffer buffer = make(step, "abc");
    EXPECT_EQ(buffer->step, 1);
    EXPECT_EQ(buffer->capacity, 4);
    strbuf_append(buffer.get(), "de", -1);
    EXPECT_EQ(text_of(buffer), "abcde");
  }
}

TEST(StrbufSetStr, GrowsToTheStepAboveTheLengthOnlyWhenTheCapacityIsNotAboveIt) {
  for (const int32_t n : {15, 16, 17, 31, 32}) {
    const Buffer buffer = make(16);
    strbuf_set_str(buffer.get(), std::string(static_cast<std::size_t>(n), 'x').c_str(), n);
    EXPECT_EQ(buffer->capacity, n < 16 ? 16 : n < 32 ? 32 : 48) << n;
  }
}

TEST(StrbufSetStr, ReturnsTheTextAndTakesANegativeLengthForAllOfIt) {
  const Buffer buffer = make(8);
  EXPECT_EQ(strbuf_set_str(buffer.get(), "abcdef", 3), buffer->data);
  EXPECT_EQ(text_of(buffer), "abc");
  strbuf_set_str(buffer.get(), "abcdef", -1);
  EXPECT_EQ(text_of(buffer), "abcdef");
  strbuf_set_str(buffer.get(), nullptr, -5);
  EXPECT_EQ(text_of(buffer), "");
}

TEST(StrbufSetStr, CopiesNothingFromANullTextOfAGivenLength) {
  const Buffer buffer = make(8);
  strbuf_set_str(buffer.get(), nullptr, 20);
  EXPECT_EQ(text_of(buffer), std::string(20, '\0'));
  EXPECT_EQ(buffer->capacity, 24);
}

TEST(StrbufSetStr, TakesAPartOfTheBuffersOwnText) {
  const Buffer buffer = make(4, "abcdef");
  strbuf_set_str(buffer.get(), buffer->data + 2, 3);
  EXPECT_EQ(text_of(buffer), "cde");
  strbuf_set_str(buffer.get(), buffer->data, -1);
  EXPECT_EQ(text_of(buffer), "cde");
}

TEST(StrbufAppend, GrowsWhenTheFreeCapacityIsNotAboveTheLength) {
  for (const int32_t n : {5, 6, 7, 10}) {
    const Buffer buffer = make(16, "0123456789");
    strbuf_append(buffer.get(), "abcdefghij", n);
    // 16 - 10 = 6 free: 5 fit, and (10 + n + 1) / 16 + 1 steps are taken from 6 on
    EXPECT_EQ(buffer->capacity, n == 5 ? 16 : 32) << n;
  }
}

TEST(StrbufAppend, IsASetOnAnEmptyBuffer) {
  const Buffer buffer = make(4);
  EXPECT_EQ(strbuf_append(buffer.get(), "abc", -1), buffer->data);
  EXPECT_EQ(buffer->capacity, 4);  // appending would have taken (0 + 3 + 1) / 4 + 1 steps
  strbuf_clear(buffer.get());
  strbuf_append(buffer.get(), "abcd", -1);
  EXPECT_EQ(buffer->capacity, 8);
}

TEST(StrbufAppend, ReturnsThePositionWritten) {
  const Buffer buffer = make(4, "abc");
  char *position = strbuf_append(buffer.get(), "de", -1);
  EXPECT_EQ(position, buffer->data + 3);
  EXPECT_STREQ(position, "de");
}

TEST(StrbufAppend, TakesAPartOfTheBuffersOwnTextWhileGrowing) {
  const Buffer buffer = make(4, "abc");
  std::string expected = "abc";
  for (int round = 0; round < 12; ++round) {
    strbuf_append(buffer.get(), buffer->data, buffer->length);
    expected += expected;
    ASSERT_EQ(text_of(buffer), expected);
  }
}

TEST(StrbufAppend, ClearsWhatItAddsForANullText) {
  const Buffer buffer = make(4, "abc");
  strbuf_append(buffer.get(), nullptr, 300);
  EXPECT_EQ(text_of(buffer), "abc" + std::string(300, '\0'));
}

TEST(Strbuf, LeavesTheTextAsItIsWhenTheCapacityWouldNotFit32Bits) {
  const Buffer buffer = make(16, "abc");
  EXPECT_EQ(strbuf_set_str(buffer.get(), nullptr, INT32_MAX), nullptr);
  EXPECT_EQ(strbuf_append(buffer.get(), nullptr, INT32_MAX), nullptr);
  EXPECT_EQ(strbuf_append(buffer.get(), nullptr, INT32_MAX - 3), nullptr);
  EXPECT_EQ(strbuf_reserve(buffer.get(), INT32_MAX), -1);
  strbuf_insert(buffer.get(), nullptr, INT32_MAX, 1);
  strbuf_insert(buffer.get(), nullptr, INT32_MAX, 3);
  EXPECT_EQ(text_of(buffer), "abc");
  EXPECT_EQ(buffer->capacity, 16);
}

TEST(StrbufReserve, FollowsTheRuleOfAppending) {
  for (const int32_t n : {-1, 0, 12, 13, 14, 100}) {
    const Buffer buffer = make(16, "abc");
    EXPECT_EQ(strbuf_reserve(buffer.get(), n), 0);
    EXPECT_EQ(buffer->capacity, n < 13 ? 16 : (3 + n + 1) / 16 * 16 + 16) << n;
    EXPECT_EQ(text_of(buffer), "abc");
  }
  EXPECT_EQ(strbuf_reserve(nullptr, 1), -1);
}

TEST(StrbufReserve, ClearsWhatItAdds) {
  const Buffer buffer = make(8, "abcdefg");
  strbuf_ltrunc(buffer.get(), 3);
  strbuf_reserve(buffer.get(), 1000);
  EXPECT_EQ(std::string(buffer->data, static_cast<std::size_t>(buffer->capacity)),
            "defg" + std::string(static_cast<std::size_t>(buffer->capacity - 4), '\0'));
}

TEST(StrbufInsert, InsertsInsideTheText) {
  const Buffer buffer = make(4, "ad");
  strbuf_insert(buffer.get(), "bcx", 2, 1);
  EXPECT_EQ(text_of(buffer), "abcd");
  strbuf_insert(buffer.get(), "__", -1, 0);
  EXPECT_EQ(text_of(buffer), "__abcd");
}

TEST(StrbufInsert, LeavesTheTextInTwiceAtAndPastTheEnd) {
  for (const int32_t position : {3, 5, 6, 100, INT_MAX}) {
    const Buffer buffer = make(16, "abc");
    strbuf_insert(buffer.get(), "xy", -1, position);
    EXPECT_EQ(text_of(buffer), "abcxyxy") << position;
  }
  const Buffer buffer = make(16, "abc");
  strbuf_insert(buffer.get(), "xy", -1, 4);  // one byte into what was appended
  EXPECT_EQ(text_of(buffer), "abcxxyy");
}

TEST(StrbufInsert, InsertsAllOrNothingWhenMemoryRunsOutInBetween) {
  int refused = 0;
  for (const char *text : {"", "abc", "abc  ", "  a text of some length  "}) {
    for (const bool trimmed : {false, true}) {
      for (const int position : {0, 1, 3, 100}) {
        for (std::size_t failure = 1; failure <= 8; ++failure) {
          const Buffer buffer = make(4, text);
          const Buffer untroubled = make(4, text);
          if (trimmed) strbuf_trim(buffer.get());
          if (trimmed) strbuf_trim(untroubled.get());
          const std::string before = text_of(buffer);
          const auto end = buffer->end - buffer->data;
          strbuf_insert(untroubled.get(), "inserted", -1, position);

          support::FailingAllocator failing(failure, true);
          strbuf_insert(buffer.get(), "inserted", -1, position);
          if (!failing.stop() || text_of(buffer) != before) {
            EXPECT_EQ(text_of(buffer), text_of(untroubled));
            continue;
          }
          ++refused;
          EXPECT_EQ(buffer->data[before.size()], '\0');
          EXPECT_EQ(buffer->end - buffer->data, end);
          for (int more = 0; more < 40; ++more) {
            ASSERT_EQ(strbuf_append(buffer.get(), "y", 1) + 1, buffer->end);
            ASSERT_EQ(buffer->end[-1], 'y');
            ASSERT_LT(static_cast<std::size_t>(buffer->end - buffer->data), malloc_usable_size(buffer->data));
          }
        }
      }
    }
  }
  EXPECT_GT(refused, 32);
}

TEST(StrbufInsert, CountsANegativePositionAsZero) {
  const Buffer buffer = make(16, "abc");
  strbuf_insert(buffer.get(), "xy", -1, INT_MIN);
  EXPECT_EQ(text_of(buffer), "xyabc");
}

TEST(StrbufInsert, TakesAPartOfTheBuffersOwnText) {
  const Buffer buffer = make(4, "abcd");
  strbuf_insert(buffer.get(), buffer->data + 1, 3, 2);
  EXPECT_EQ(text_of(buffer), "abbcdcd");
}

TEST(StrbufClear, EmptiesTheTextAndKeepsTheCapacity) {
  const Buffer buffer = make(4, "abcdef");
  strbuf_clear(buffer.get());
  EXPECT_EQ(text_of(buffer), "");
  EXPECT_STREQ(buffer->data, "");
  EXPECT_EQ(buffer->end, buffer->data);
  EXPECT_EQ(buffer->capacity, 8);
}

TEST(StrbufCopy, CopiesTheTextOfAnotherBufferOnly) {
  const Buffer a = make(4, "abc");
  const Buffer b = make(4, "something longer");
  strbuf_copy(a.get(), b.get());
  EXPECT_EQ(text_of(a), "something longer");
  strbuf_copy(a.get(), a.get());
  EXPECT_EQ(text_of(a), "something longer");
  strbuf_copy(a.get(), nullptr);
  EXPECT_EQ(text_of(a), "");
  strbuf_copy(nullptr, b.get());
}

TEST(StrbufGetat, GivesTheByteUnsignedAndZeroOutsideTheText) {
  const Buffer buffer = make(4, "a\xE9");
  EXPECT_EQ(strbuf_getat(buffer.get(), 0), 'a');
  EXPECT_EQ(strbuf_getat(buffer.get(), 1), 0xE9);
  for (const int32_t index : {-1, 2, 3, INT_MAX, INT_MIN}) {
    EXPECT_EQ(strbuf_getat(buffer.get(), index), 0) << index;
  }
  strbuf_ltrunc(buffer.get(), 1);
  EXPECT_EQ(strbuf_getat(buffer.get(), 1), 0);
}

TEST(StrbufDetach, HandsTheTextOverAndLeavesAUsableEmptyBuffer) {
  const Buffer buffer = make(16);
  for (int i = 0; i < 1000; ++i) {
    strbuf_append(buffer.get(), "x", 1);
  }
  char *text = strbuf_detach(buffer.get());
  EXPECT_EQ(text, std::string(1000, 'x'));
  ZfxMemFree(text);
  EXPECT_EQ(buffer->length, 0);
  EXPECT_EQ(buffer->capacity, 16);
  EXPECT_EQ(buffer->step, 16);
  EXPECT_EQ(buffer->end, buffer->data);
  strbuf_append(buffer.get(), "again", -1);
  EXPECT_EQ(text_of(buffer), "again");
}

TEST(StrbufDetach, LeavesAPendingScratchAreaToTheCaller) {
  const Buffer buffer = make(16, "abc");
  char *scratch = strbuf_getBufferSetLength(buffer.get(), 10);
  ZfxMemFree(strbuf_detach(buffer.get()));
  EXPECT_EQ(buffer->scratch, nullptr);
  EXPECT_EQ(buffer->scratch_size, 0);
  EXPECT_STREQ(scratch, "abc");
  ZfxMemFree(scratch);
}

TEST(StrbufFormat, ReplacesTheTextAndReturnsTheCount) {
  const Buffer buffer = make(16, "before");
  EXPECT_EQ(strbuf_format(buffer.get(), "%d-%s", 42, "x"), 4);
  EXPECT_EQ(text_of(buffer), "42-x");
  EXPECT_EQ(strbuf_append_format(buffer.get(), "/%03d", 7), 4);
  EXPECT_EQ(text_of(buffer), "42-x/007");
}

TEST(StrbufFormat, CutsAt16383BytesAndReturnsTheFullCount) {
  for (const int n : {16382, 16383, 16384, 20000}) {
    const Buffer buffer = make(16, "ab");
    EXPECT_EQ(strbuf_append_format(buffer.get(), "%*s", n, "x"), n);
    EXPECT_EQ(buffer->length, 2 + std::min(n, STRBUF_FORMAT_MAX));
    EXPECT_EQ(strbuf_format(buffer.get(), "%*s", n, "x"), n);
    EXPECT_EQ(text_of(buffer), (std::string(static_cast<std::size_t>(n - 1), ' ') + 'x').substr(0, 16383));
  }
}

TEST(StrbufFormat, GivesMinusOneForAValueThatTheLibraryRefuses) {
  const wchar_t refused[] = {L'\xD800', L'\0'};
  const Buffer buffer = make(16, "ab");
  EXPECT_EQ(strbuf_append_format(buffer.get(), "x%ls", refused), -1);
  EXPECT_EQ(text_of(buffer), "ab");
  EXPECT_EQ(strbuf_format(buffer.get(), "x%ls", refused), -1);
  EXPECT_EQ(text_of(buffer), "");
}

TEST(StrbufGetBufferSetLength, LendsAZeroedAreaWithAsMuchOfTheTextAsFits) {
  for (const int32_t n : {1, 2, 5, 6, 7, 50}) {
    const Buffer buffer = make(16, "abcdef");
    const char *scratch = strbuf_getBufferSetLength(buffer.get(), n);
    const auto size = static_cast<std::size_t>(n);
    std::string expected = std::string("abcdef").substr(0, size - 1);
    expected.resize(size, '\0');
    EXPECT_EQ(std::string(scratch, size), expected) << n;
    EXPECT_EQ(buffer->scratch, scratch);
    EXPECT_EQ(buffer->scratch_size, n);
  }
}

TEST(StrbufGetBufferSetLength, SizesTheAreaByTheStepBelowOne) {
  for (const int32_t n : {0, -1, INT_MIN}) {
    const Buffer buffer = make(4, "abcdef");
    EXPECT_STREQ(strbuf_getBufferSetLength(buffer.get(), n), "abc");
    EXPECT_EQ(buffer->scratch_size, 4);
  }
}

TEST(StrbufReleaseBuffer, TakesTheContentOverWhenAsked) {
  const Buffer buffer = make(4, "abc");
  std::strcpy(strbuf_getBufferSetLength(buffer.get(), 20), "written");
  strbuf_releaseBuffer(buffer.get(), 1, -1);
  EXPECT_EQ(text_of(buffer), "written");
  EXPECT_EQ(buffer->scratch, nullptr);
  EXPECT_EQ(buffer->scratch_size, 0);
  std::strcpy(strbuf_getBufferSetLength(buffer.get(), 20), "other");
  strbuf_releaseBuffer(buffer.get(), 1, 3);
  EXPECT_EQ(text_of(buffer), "oth");
  std::strcpy(strbuf_getBufferSetLength(buffer.get(), 20), "dropped");
  strbuf_releaseBuffer(buffer.get(), 0, -1);
  EXPECT_EQ(text_of(buffer), "oth");
  strbuf_releaseBuffer(buffer.get(), 1, -1);
  EXPECT_EQ(text_of(buffer), "oth");
}

TEST(StrbufReleaseBuffer, ReadsNoFurtherThanTheAreaReaches) {
  const Buffer buffer = make(4);
  std::memset(strbuf_getBufferSetLength(buffer.get(), 8), 'x', 8);
  strbuf_releaseBuffer(buffer.get(), 1, -1);
  EXPECT_EQ(text_of(buffer), "xxxxxxxx");
  std::memset(strbuf_getBufferSetLength(buffer.get(), 8), 'y', 8);
  strbuf_releaseBuffer(buffer.get(), 1, INT_MAX);
  EXPECT_EQ(text_of(buffer), "yyyyyyyy");
}

TEST(StrbufCompareNoCase, OrdersAsStrcasecmp) {
  const Buffer buffer = make(4, "Hello");
  EXPECT_EQ(strbuf_compareNoCase(buffer.get(), "hELLO"), 0);
  EXPECT_GT(strbuf_compareNoCase(buffer.get(), "hellm"), 0);
  EXPECT_LT(strbuf_compareNoCase(buffer.get(), "hellp"), 0);
  EXPECT_GT(strbuf_compareNoCase(buffer.get(), nullptr), 0);
  EXPECT_EQ(strbuf_compareNoCase(nullptr, ""), 0);
}

TEST(StrbufEndswith, ComparesTheLastBytes) {
  const Buffer buffer = make(4, "abcxy");
  EXPECT_EQ(strbuf_endswith(buffer.get(), "XY", -1, 1), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "XY", -1, 0), 0);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "xy", -1, 0), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "xyz", 2, 0), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "cx", -1, 0), 0);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "abcxy", -1, 0), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "_abcxy", -1, 0), 0);
  EXPECT_EQ(strbuf_endswith(buffer.get(), "", -1, 0), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), nullptr, -1, 0), 1);
  EXPECT_EQ(strbuf_endswith(buffer.get(), nullptr, 2, 0), 0);
  EXPECT_EQ(strbuf_endswith(buffer.get(), nullptr, 2, 1), 0);
  EXPECT_EQ(strbuf_endswith(nullptr, "", -1, 0), 0);
}

TEST(StrbufEndswith, ReadsAShortTextOnlyToItsEnd) {
  const Buffer buffer = make(64, "0123456789012345678901234567890123456789");
  const auto ending = std::make_unique<char[]>(2);
  ending[0] = '0';
  EXPECT_EQ(strbuf_endswith(buffer.get(), ending.get(), 40, 0), 0);
}

TEST(StrbufLtrunc, DropsTheFirstBytes) {
  const Buffer buffer = make(4, "abcdef");
  for (const int32_t n : {0, -1, INT_MIN}) {
    EXPECT_EQ(strbuf_ltrunc(buffer.get(), n), 6U);
  }
  EXPECT_EQ(strbuf_ltrunc(buffer.get(), 2), 4U);
  EXPECT_STREQ(buffer->data, "cdef");
  EXPECT_EQ(buffer->end, buffer->data + 4);
  EXPECT_EQ(strbuf_ltrunc(buffer.get(), 3), 1U);
  EXPECT_EQ(strbuf_ltrunc(buffer.get(), 1), 0U);
  EXPECT_EQ(text_of(buffer), "");
  EXPECT_EQ(strbuf_ltrunc(buffer.get(), INT_MAX), 0U);
}

TEST(StrbufTrim, RemovesWhiteSpaceFromBothEnds) {
  for (const auto &[text, trimmed] :
       {std::pair{"  x y\t\n", "x y"}, {"x", "x"}, {" \v\f\r", ""}, {"", ""}, {"a ", "a"}, {" a", "a"}}) {
    const Buffer buffer = make(4, text);
    strbuf_trim(buffer.get());
    EXPECT_EQ(text_of(buffer), trimmed);
    EXPECT_STREQ(buffer->data, trimmed);
  }
}

TEST(StrbufTrim, LeavesTheEndWhereItWas) {
  const Buffer buffer = make(32, "  abc ");
  strbuf_trim(buffer.get());
  EXPECT_EQ(buffer->end, buffer->data + 6);
  EXPECT_EQ(strbuf_append(buffer.get(), "XY", -1), buffer->data + 6);
  EXPECT_EQ(buffer->length, 5);
  EXPECT_EQ(std::string(buffer->data, 9), std::string("abc\0\0\0XY\0", 9));
}

TEST(StrbufTrim, LetsWhatIsAppendedAtTheOldEndStayInsideTheBlock) {
  const Buffer buffer = make(16, (std::string(12, ' ') + "abc").c_str());
  strbuf_trim(buffer.get());
  strbuf_append(buffer.get(), "0123456789ab", 12);  // 16 - 3 > 12: room by the rule, but it begins at 15
  EXPECT_EQ(buffer->capacity, 16);
  EXPECT_EQ(buffer->end, buffer->data + 27);
  EXPECT_EQ(std::string(buffer->data + 15), "0123456789ab");
  EXPECT_EQ(std::string(buffer->data), "abc");
}

TEST(StrbufTrim, KeepsTheEndInsideTheBlockWhateverIsAppendedThere) {
  const std::string appended(40, 'x');
  for (int32_t step = 1; step <= 40; ++step) {
    for (int32_t blanks = 0; blanks < step; ++blanks) {
      for (int32_t n = 1; n <= step; ++n) {
        const Buffer buffer = make(step, (std::string(static_cast<std::size_t>(blanks), ' ') + "a").c_str());
        strbuf_trim(buffer.get());
        strbuf_append(buffer.get(), appended.c_str(), n);
        ASSERT_LT(static_cast<std::size_t>(buffer->end - buffer->data), malloc_usable_size(buffer->data));
        ASSERT_EQ(*buffer->end, '\0') << step << ' ' << blanks << ' ' << n;
        for (int32_t more = n; more < 2 * step; ++more) {
          strbuf_append(buffer.get(), "y", 1);
          ASSERT_LT(static_cast<std::size_t>(buffer->end - buffer->data), malloc_usable_size(buffer->data));
        }
      }
    }
  }
}

TEST(StrbufFormat, TakesANullFormatForAnEmptyText) {
  const Buffer buffer = make(16, "abc");
  const char *const no_format = nullptr;
  EXPECT_EQ(strbuf_append_format(buffer.get(), no_format), 0);
  EXPECT_STREQ(strbuf_get(buffer.get()), "abc");
  EXPECT_EQ(strbuf_format(buffer.get(), no_format), 0);
  EXPECT_STREQ(strbuf_get(buffer.get()), "");
}

TEST(Strbuf, AcceptsNullHandlesEverywhere) {
  strbuf_destroy(nullptr);
  strbuf_clear(nullptr);
  strbuf_trim(nullptr);
  strbuf_insert(nullptr, "x", 1, 0);
  strbuf_releaseBuffer(nullptr, 1, -1);
  EXPECT_EQ(strbuf_set_str(nullptr, "x", 1), nullptr);
  EXPECT_EQ(strbuf_append(nullptr, "x", 1), nullptr);
  EXPECT_EQ(strbuf_length(nullptr), 0U);
  EXPECT_EQ(strbuf_get(nullptr), nullptr);
  EXPECT_EQ(strbuf_getat(nullptr, 0), 0);
  EXPECT_EQ(strbuf_detach(nullptr), nullptr);
  EXPECT_EQ(strbuf_format(nullptr, "x"), -1);
  EXPECT_EQ(strbuf_append_format(nullptr, "x"), -1);
  EXPECT_EQ(strbuf_getBufferSetLength(nullptr, 4), nullptr);
  EXPECT_EQ(strbuf_ltrunc(nullptr, 1), 0U);
}

std::string random_text(std::mt19937 &random, std::size_t limit) {
  std::string text(random() % limit, ' ');
  for (char &c : text)
    c = " \tabcdefgh"[random() % 10];
  return text;
}

TEST(Strbuf, AgreesByteForByteWithThePlainRulesOverRandomScripts) {
  ::mallopt(M_PERTURB, 0xA5);  // new blocks are not zero by chance
  std::mt19937 random(20261121);
  for (int script = 0; script < 3000; ++script) {
    const int step = 1 + static_cast<int>(random() % (script % 2 == 0 ? 5 : 100));
    PlainBuffer plain(step);
    const Buffer buffer = make(step);
    for (int operation = 0; operation < 40; ++operation) {
      const std::string text = random_text(random, script % 7 == 0 ? 300 : 12);
      const int n = static_cast<int>(random() % 20) - 2;
      switch (random() % 8) {
        case 0:
          plain.set(text);
          strbuf_set_str(buffer.get(), text.c_str(), -1);
          break;
        case 1:
        case 2:
        case 3:
          plain.append(text);
          strbuf_append(buffer.get(), text.c_str(), length_of(text));
          break;
        case 4:
          plain.insert(text, std::max(n, 0));
          strbuf_insert(buffer.get(), text.c_str(), -1, n);
          break;
        case 5:
          plain.trim();
          strbuf_trim(buffer.get());
          break;
        case 6:
          plain.drop_front(n);
          strbuf_ltrunc(buffer.get(), n);
          break;
        default:
          if (n >= 0) plain.reserve(n);
          strbuf_reserve(buffer.get(), n);
          break;
      }
      ASSERT_EQ(buffer->length, plain.length);
      ASSERT_EQ(buffer->capacity, plain.capacity);
      ASSERT_EQ(buffer->end - buffer->data, plain.end);
      ASSERT_EQ(std::string(buffer->data, plain.block.size()),
                std::string(plain.block.data(), plain.block.size()));
    }
  }
}

TEST(strbuf, TakesNoMoreFromBehindItsTextThanItsBlockHolds) {
  for (const int32_t offset : {6, 59, 60, 66, 67}) {  // 64 + 1 bytes, rounded up to 68
    for (const int32_t n : {1, 2, 8, 9, 20, 50}) {
      const Buffer buffer = make(64, "hello");
      strbuf_append(buffer.get(), "!", 1);
      strbuf_append(buffer.get(), buffer->data + offset, n);
      EXPECT_EQ(buffer->length, 6 + std::min(n, 68 - offset)) << offset << ' ' << n;
    }
  }
}

TEST(strbuf, TakesNoMoreOfItsOwnTextThanItsBlockHolds) {
  constexpr int32_t kFarTooMany = 50000000;
  strbuf *buffer = strbuf_create(16, "hello");
  strbuf_set_str(buffer, buffer->data, kFarTooMany);
  EXPECT_STREQ(strbuf_get(buffer), "hello");
  EXPECT_LT(strbuf_length(buffer), 100U);
  strbuf_append(buffer, buffer->data, kFarTooMany);
  EXPECT_LT(strbuf_length(buffer), 200U);
  strbuf_insert(buffer, buffer->data, kFarTooMany, 1);
  EXPECT_LT(strbuf_length(buffer), 500U);
  strbuf_destroy(buffer);
}

}  // namespace
