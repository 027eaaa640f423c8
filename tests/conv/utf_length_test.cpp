// The longest texts that UCS-2 makes: what decides is whether their length can be told. Apart from the other
// tests, so that valgrind watches the blocks of those, which it cannot where failures are ordered.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "failing_allocator.hpp"
#include "utf.h"

namespace {

// So many units of three bytes each, in little memory: the same pages stand behind each other until one is
// changed.
class ManyUnits {
 public:
  explicit ManyUnits(std::size_t count) : size_((count * sizeof(uint16_t) / kPiece + 1) * kPiece) {
    const std::string piece(kPiece, '\xFF');
    const int file = ::memfd_create("units", MFD_CLOEXEC);
    EXPECT_EQ(::write(file, piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
    area_ = static_cast<char *>(::mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    EXPECT_NE(area_, MAP_FAILED);
    for (char *at = area_; at != area_ + size_; at += kPiece) {
      EXPECT_EQ(::mmap(at, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED | MAP_NORESERVE, file, 0),
                at);
    }
    ::close(file);
  }
  ~ManyUnits() { ::munmap(area_, size_); }
  ManyUnits(const ManyUnits &) = delete;
  ManyUnits &operator=(const ManyUnits &) = delete;

  [[nodiscard]] uint16_t *get() const { return static_cast<uint16_t *>(static_cast<void *>(area_)); }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 22;
  std::size_t size_;
  char *area_ = nullptr;
};

TEST(Ucs2ToUtf8, GivesNothingForATextWhoseLengthCannotBeTold) {
  constexpr int32_t kCount = INT32_MAX / 3 + 1;
  const ManyUnits units(kCount);
  const support::LimitedAllocator small_blocks_only(1 << 20);
  char *text = nullptr;
  support::allocations_since_last_call();
  EXPECT_EQ(Ucs2ToUtf8(units.get(), kCount, &text), 0);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(support::allocations_since_last_call(), 0U) << "there is no use for a block";
  units.get()[kCount - 1] = 'A';
  EXPECT_EQ(Ucs2ToUtf8(units.get(), kCount, &text), 0);
  EXPECT_EQ(support::allocations_since_last_call(), 1U) << "a text of the greatest length that can be told";
}

}  // namespace
