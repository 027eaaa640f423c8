#include "tls.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

#include "zfxmemory.h"

namespace {

std::atomic<int> released;

void count_release(void *value) {
  released += *static_cast<int *>(value);
}

// A key that is deleted at the end of the test.
struct Key {
  explicit Key(ZfxTLSDestructor destructor) { EXPECT_EQ(ZfxCreateTLS(&key, destructor), 0); }
  ~Key() { EXPECT_EQ(ZfxDeleteTLS(key), 0); }
  Key(const Key &) = delete;
  Key &operator=(const Key &) = delete;

  uint32_t key = 0;
};

uint32_t deleted_key() {
  uint32_t key = 0;
  EXPECT_EQ(ZfxCreateTLS(&key, nullptr), 0);
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
  return key;
}

TEST(ZfxCreateTLS, GivesKeysThatHoldNullAtFirst) {
  const Key one(nullptr);
  const Key other(nullptr);
  EXPECT_NE(one.key, other.key);
  EXPECT_EQ(ZfxGetTLSValue(one.key), nullptr);
  std::thread([&] { EXPECT_EQ(ZfxGetTLSValue(one.key), nullptr); }).join();
}

TEST(ZfxCreateTLS, RefusesANullKeyWithAnErrorNumber) {
  EXPECT_EQ(ZfxCreateTLS(nullptr, count_release), EINVAL);
}

TEST(ZfxCreateTLS, ReportsWhenTheSystemHasNoMoreKeysAndLeavesTheKeyAlone) {
  std::vector<uint32_t> keys;
  uint32_t key = 4711;
  int32_t result = 0;
  while (keys.size() < 100000 && (result = ZfxCreateTLS(&key, nullptr)) == 0) {
    keys.push_back(key);
    key = 4711;
  }
  EXPECT_EQ(result, EAGAIN);
  EXPECT_EQ(key, 4711U);
  for (const uint32_t each : keys) {
    EXPECT_EQ(ZfxDeleteTLS(each), 0);
  }
}

TEST(ZfxCreateTLS, CallsTheGivenDestructorWithTheValueOfEveryEndingThread) {
  const Key key(count_release);
  released = 0;
  int one = 1;
  int ten = 10;
  std::thread first([&] { ZfxSetTLSValue(key.key, &one); });
  std::thread second([&] { ZfxSetTLSValue(key.key, &ten); });
  std::thread without_a_value([&] { ZfxGetTLSValue(key.key); });
  first.join();
  second.join();
  without_a_value.join();
  EXPECT_EQ(released, 11);
}

// A block of this size is a mapping of its own, which the allocator counts apart. Sanitizers replace the
// allocator and count nothing; there the leak check is what notices.
TEST(ZfxCreateTLS, ReleasesTheValueOfAnEndingThreadWhenNoDestructorIsGiven) {
  const Key key(nullptr);
  const std::size_t before = mallinfo2().hblkhd;
  std::size_t during = 0;
  std::thread([&] {
    EXPECT_EQ(ZfxSetTLSValue(key.key, ZfxMemAlloc(uint64_t{64} << 20)), 0);
    during = mallinfo2().hblkhd;
  }).join();
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_GT(during, before);
#endif
  EXPECT_EQ(mallinfo2().hblkhd, before);
}

TEST(ZfxGlobalTLSDestructor, ReleasesABlockAndIgnoresNull) {
  ZfxGlobalTLSDestructor(ZfxMemAlloc(16));
  ZfxGlobalTLSDestructor(nullptr);
}

TEST(ZfxSetTLSValue, KeepsOneValuePerThread) {
  const Key key(count_release);
  int mine = 0;
  int theirs = 0;
  EXPECT_EQ(ZfxSetTLSValue(key.key, &mine), 0);
  std::thread([&] {
    EXPECT_EQ(ZfxSetTLSValue(key.key, &theirs), 0);
    EXPECT_EQ(ZfxGetTLSValue(key.key), &theirs);
  }).join();
  EXPECT_EQ(ZfxGetTLSValue(key.key), &mine);
}

TEST(ZfxSetTLSValue, ReplacesAValueWithoutReleasingIt) {
  const Key key(count_release);
  released = 0;
  int value = 1;
  std::thread([&] {
    EXPECT_EQ(ZfxSetTLSValue(key.key, &value), 0);
    EXPECT_EQ(ZfxSetTLSValue(key.key, nullptr), 0);
    EXPECT_EQ(ZfxGetTLSValue(key.key), nullptr);
  }).join();
  EXPECT_EQ(released, 0);
}

TEST(ZfxSetTLSValue, RefusesAKeyThatDoesNotExist) {
  int value = 0;
  EXPECT_EQ(ZfxSetTLSValue(deleted_key(), &value), EINVAL);
  EXPECT_EQ(ZfxSetTLSValue(UINT32_MAX, &value), EINVAL);
}

TEST(ZfxGetTLSValue, GivesNullForAKeyThatDoesNotExist) {
  EXPECT_EQ(ZfxGetTLSValue(deleted_key()), nullptr);
  EXPECT_EQ(ZfxGetTLSValue(UINT32_MAX), nullptr);
}

TEST(ZfxDeleteTLS, LeavesStoredValuesToTheirThreads) {
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, count_release), 0);
  released = 0;
  int value = 1;
  std::thread([&] {
    EXPECT_EQ(ZfxSetTLSValue(key, &value), 0);
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  }).join();
  EXPECT_EQ(released, 0);
}

TEST(ZfxDeleteTLS, RefusesAKeyThatDoesNotExist) {
  EXPECT_EQ(ZfxDeleteTLS(deleted_key()), EINVAL);
  EXPECT_EQ(ZfxDeleteTLS(UINT32_MAX), EINVAL);
}

}  // namespace
