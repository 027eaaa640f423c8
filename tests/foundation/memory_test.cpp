#include "zfxmemory.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

bool all_zero(const void *block, std::size_t size) {
  const auto *bytes = static_cast<const unsigned char *>(block);
  return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
}

// Fills and releases blocks of the size, so that the next one of it is a block used before.
void soil_the_heap(std::size_t size) {
  void *blocks[8];
  for (void *&block : blocks) {
    block = ZfxMemAlloc(size);
    std::memset(block, 0xA5, size);
  }
  for (void *block : blocks) {
    ZfxMemFree(block);
  }
}

TEST(ZfxMemAlloc, FillsReusedBlocksOfEverySizeWithZeros) {
  for (std::size_t size = 1; size <= 2100; ++size) {
    soil_the_heap(size);
    void *block = ZfxMemAlloc(size);
    ASSERT_TRUE(all_zero(block, (size + 3) / 4 * 4)) << size;
    ZfxMemFree(block);
  }
}

TEST(ZfxMemAlloc, RoundsTheSizeUpToAMultipleOfFour) {
  for (std::size_t size = 1; size <= 64; ++size) {
    void *block = ZfxMemAlloc(size);
    EXPECT_GE(malloc_usable_size(block), (size + 3) / 4 * 4) << size;
    ZfxMemFree(block);
  }
}

TEST(ZfxMemAlloc, RefusesSizesThatCannotBeRoundedInsteadOfWrapping) {
  for (const uint64_t size :
       {UINT64_MAX, UINT64_MAX - 1, UINT64_MAX - 2, UINT64_MAX - 3, uint64_t{1} << 62}) {
    EXPECT_EQ(ZfxMemAlloc(size), nullptr) << size;
  }
}

TEST(ZfxMemAlloc, GivesSomethingThatCanBeFreedForZeroBytes) {
  ZfxMemFree(ZfxMemAlloc(0));
}

TEST(ZfxMemRealloc, ServesNullAsANewRoundedZeroFilledBlock) {
  soil_the_heap(8);
  void *block = ZfxMemRealloc(nullptr, 6);
  EXPECT_TRUE(all_zero(block, 8));
  ZfxMemFree(block);
}

TEST(ZfxMemRealloc, KeepsTheContentOfABlock) {
  auto *block = static_cast<char *>(ZfxMemAlloc(8));
  std::memcpy(block, "1234567", 8);
  block = static_cast<char *>(ZfxMemRealloc(block, 4096));
  EXPECT_STREQ(block, "1234567");
  ZfxMemFree(block);
}

TEST(ZfxMemRealloc, TakesTheSizeOfABlockExactlyAsGivenAndKeepsItWhenRefused) {
  auto *block = static_cast<char *>(ZfxMemAlloc(8));
  std::memcpy(block, "1234567", 8);
  EXPECT_EQ(ZfxMemRealloc(block, UINT64_MAX - 2),
            nullptr);  // rounded up it would wrap to 0 and release the block
  EXPECT_STREQ(block, "1234567");
  ZfxMemFree(block);
}

TEST(ZfxMemFree, IgnoresNull) {
  ZfxMemFree(nullptr);
}

TEST(ZfxMemReadable, IsTrueForEveryPointerButNullWhateverTheLength) {
  int object = 0;
  for (const uint64_t length : {uint64_t{0}, uint64_t{1}, UINT64_MAX}) {
    EXPECT_EQ(ZfxMemReadable(&object, length), 1);
    EXPECT_EQ(ZfxMemWriteable(&object, length), 1);
    EXPECT_EQ(ZfxMemReadable(nullptr, length), 0);
    EXPECT_EQ(ZfxMemWriteable(nullptr, length), 0);
  }
}

TEST(ZfxMemCopy, CopiesTheBytesAndReturnsTheDestination) {
  char destination[4] = "xyz";
  EXPECT_EQ(ZfxMemCopy(destination, "ab", 2), destination);
  EXPECT_STREQ(destination, "abz");
}

TEST(ZfxMemCopy, CopiesNothingWhenASideIsNullAndStillReturnsTheDestination) {
  char destination[4] = "xyz";
  EXPECT_EQ(ZfxMemCopy(destination, nullptr, 2), destination);
  EXPECT_STREQ(destination, "xyz");
  EXPECT_EQ(ZfxMemCopy(nullptr, "ab", 2), nullptr);
}

TEST(ZfxStrDup, GivesNullForNull) {
  EXPECT_EQ(ZfxStrDup(nullptr), nullptr);
}

TEST(ZfxStrDup, GivesANewTextOfItsOwn) {
  for (const std::string text : {"", "a", "some text"}) {
    char *copy = ZfxStrDup(text.c_str());
    EXPECT_NE(copy, text.c_str());
    EXPECT_EQ(copy, text);
    ZfxMemFree(copy);
  }
}

}  // namespace
