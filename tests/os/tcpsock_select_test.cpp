#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <vector>

#include "children.hpp"
#include "files.hpp"
#include "next_function.hpp"
#include "tcpsock.h"

namespace {

bool select_finds_nothing_set = false;

}  // namespace

// Takes the place of the C library's; can pretend that something is ready and name nothing.
extern "C" int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout) {
  if (select_finds_nothing_set) {
    for (fd_set *set : {readable, writable, exceptional}) {
      if (set != nullptr) FD_ZERO(set);
    }
    return 1;
  }
  static const auto next = support::next_function<decltype(&::select)>("select");
  return next(count, readable, writable, exceptional, timeout);
}

namespace {

constexpr int32_t kUntouched = -77;

// Two connected sockets, the first of them also under a chosen descriptor number.
class Pair {
 public:
  explicit Pair(int at_least = 0) {
    int32_t listener = -1;
    int32_t port = 0;
    int32_t first = -1;
    EXPECT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
    EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &peer), 0);
    first = ZfxAccept(listener, nullptr, nullptr);
    socket = ::fcntl(first, F_DUPFD_CLOEXEC, at_least);
    EXPECT_GE(socket, at_least);
    ZfxCloseSocket(first);
    ZfxCloseSocket(listener);
  }
  ~Pair() {
    ZfxCloseSocket(socket);
    ZfxCloseSocket(peer);
  }
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;

  void close_peer() {
    ZfxCloseSocket(peer);
    peer = -1;
  }
  void send(const char *text, int flags = 0) const {
    EXPECT_EQ(::send(peer, text, 1, flags), 1);
    if (flags != 0) return;
    char byte = 0;
    EXPECT_EQ(::recv(socket, &byte, 1, MSG_PEEK), 1);  // until it has arrived
  }

  int32_t socket = -1;
  int32_t peer = -1;
};

struct Answer {
  int32_t result;
  int32_t error;
  bool operator==(const Answer &) const = default;
};

void PrintTo(const Answer &answer, std::ostream *stream) {
  *stream << "result " << answer.result << " error " << answer.error;
}

using Select = int32_t(int32_t, timeval *, int32_t *);

Answer ask(Select *select, int32_t socket, timeval timeout = {}) {
  Answer answer = {0, kUntouched};
  answer.result = select(socket, &timeout, &answer.error);
  return answer;
}

// Run with descriptors on both sides of FD_SETSIZE: the rules are the same.
class SelectTest : public ::testing::TestWithParam<int> {
 protected:
  static void SetUpTestSuite() {
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  void SetUp() override {
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur <= static_cast<rlim_t>(GetParam()) + 16) {
      GTEST_SKIP() << "descriptor " << GetParam() << " is above the hard limit here";
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Descriptor, SelectTest,
                         ::testing::Values(3, FD_SETSIZE - 1, FD_SETSIZE, FD_SETSIZE + 1, 4000));

TEST_P(SelectTest, StoresZeroWhenTheTimeIsUp) {
  const Pair pair(GetParam());
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket), (Answer{0, 0}));
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket, {0, 2000}), (Answer{0, 0}));
}

TEST_P(SelectTest, TellsThatASocketCanBeRead) {
  const Pair pair(GetParam());
  pair.send("x");
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket), (Answer{1, 0}));
  EXPECT_EQ(ZfxSocketReadSelect(pair.socket, nullptr, nullptr), 1);
}

TEST_P(SelectTest, TellsThatASocketCanBeWritten) {
  const Pair pair(GetParam());
  EXPECT_EQ(ask(ZfxSocketWriteSelect, pair.socket), (Answer{1, 0}));
  EXPECT_EQ(ZfxSocketWriteSelect(pair.socket, nullptr, nullptr), 1);
}

TEST_P(SelectTest, CountsTheEndOfTheStreamAsReady) {
  Pair pair(GetParam());
  pair.close_peer();
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket, {5, 0}), (Answer{1, 0}));
}

TEST_P(SelectTest, ReturnsTheCountForAnExceptionalConditionOfAReader) {
  const Pair pair(GetParam());
  pair.send("!", MSG_OOB);
  timeval limit = {5, 0};
  int32_t error = kUntouched;
  ASSERT_EQ(ZfxSocketReadSelect(pair.socket, &limit, &error), 1);
  errno = ENOTTY;
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket), (Answer{1, ENOTTY})) << "errno is stored as it is";
}

TEST_P(SelectTest, CountsBothConditionsWhenBothHold) {
  const Pair pair(GetParam());
  pair.send("x");
  pair.send("!", MSG_OOB);
  Answer answer = {};
  for (int i = 0; i < 5000 && answer.result != 2; ++i) {
    errno = ENOTTY;
    answer = ask(ZfxSocketReadSelect, pair.socket);
    ::usleep(100);
  }
  EXPECT_EQ(answer, (Answer{2, ENOTTY}));
}

TEST_P(SelectTest, ReturnsMinusOneForAnExceptionalConditionOfAWriter) {
  const Pair pair(GetParam());
  pair.send("!", MSG_OOB);
  timeval limit = {5, 0};
  ASSERT_EQ(ZfxSocketReadSelect(pair.socket, &limit, nullptr), 1);  // it has arrived
  errno = ENOTTY;
  EXPECT_EQ(ask(ZfxSocketWriteSelect, pair.socket), (Answer{-1, ENOTTY}));
  EXPECT_EQ(ZfxSocketWriteSelect(pair.socket, nullptr, nullptr), -1);
}

TEST_P(SelectTest, FailsForADescriptorThatIsNotOpen) {
  const int closed = GetParam() == 3 ? 62 : GetParam();
  ASSERT_EQ(::fcntl(closed, F_GETFD), -1);
  EXPECT_EQ(ask(ZfxSocketReadSelect, closed), (Answer{-1, EBADF}));
  EXPECT_EQ(ask(ZfxSocketWriteSelect, closed), (Answer{-1, EBADF}));
  EXPECT_EQ(ZfxSocketReadSelect(closed, nullptr, nullptr), -1);
}

TEST_P(SelectTest, FailsForANegativeTime) {
  const Pair pair(GetParam());
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket, {-1, 0}), (Answer{-1, EINVAL}));
  EXPECT_EQ(ask(ZfxSocketWriteSelect, pair.socket, {0, -1}), (Answer{-1, EINVAL}));
}

TEST_P(SelectTest, FailsWhenASignalInterrupts) {
  const Pair pair(GetParam());
  const children::Interruptions interruptions;
  int32_t error = kUntouched;
  EXPECT_EQ(ZfxSocketReadSelect(pair.socket, nullptr, &error), -1);
  EXPECT_EQ(error, EINTR);
}

TEST_P(SelectTest, LeavesTheTimeThatWasLeft) {
  const Pair pair(GetParam());
  timeval timeout = {0, 2000};
  EXPECT_EQ(ZfxSocketReadSelect(pair.socket, &timeout, nullptr), 0);
  EXPECT_EQ(timeout.tv_sec, 0);
  EXPECT_EQ(timeout.tv_usec, 0);
  timeout = {1000, 0};
  EXPECT_EQ(ZfxSocketWriteSelect(pair.socket, &timeout, nullptr), 1);
  EXPECT_GE(timeout.tv_sec, 900);
}

TEST(SelectThatNamesNothing, LeavesTheErrorAlone) {
  const Pair pair;
  select_finds_nothing_set = true;
  EXPECT_EQ(ask(ZfxSocketReadSelect, pair.socket), (Answer{1, kUntouched}));
  EXPECT_EQ(ask(ZfxSocketWriteSelect, pair.socket), (Answer{1, kUntouched}));
  select_finds_nothing_set = false;
}

TEST(SelectOnImpossibleDescriptors, FailsWithoutTouchingMemory) {
  for (const int32_t socket : {-1, -2, INT32_MIN, INT32_MAX, INT32_MAX - 1, 1 << 30}) {
    EXPECT_EQ(ask(ZfxSocketReadSelect, socket), (Answer{-1, EBADF})) << socket;
    EXPECT_EQ(ask(ZfxSocketWriteSelect, socket), (Answer{-1, EBADF})) << socket;
  }
}

// Every connection of a busy server is watched, those above FD_SETSIZE too.
TEST(SelectOnManyConnections, FindsTheReadyOnesAmongThousands) {
  constexpr std::size_t kConnections = 1200;
  rlimit limit = {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < 2 * kConnections + 64) GTEST_SKIP() << "the hard limit of descriptors is too low";

  const int before = support::open_descriptors();
  int32_t listener = -1;
  int32_t port = 0;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
  std::vector<int32_t> clients(kConnections);
  std::vector<int32_t> servers(kConnections);
  for (std::size_t i = 0; i < kConnections; ++i) {
    ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &clients[i]), 0);
    servers[i] = ZfxAccept(listener, nullptr, nullptr);
    ASSERT_GE(servers[i], 0);
    if (i % 3 != 0) continue;
    ASSERT_EQ(ZfxSocketWrite(clients[i], "x", 1), 1);
  }
  EXPECT_GT(servers.back(), FD_SETSIZE);
  for (std::size_t i = 0; i < kConnections; ++i) {
    EXPECT_EQ(ask(ZfxSocketReadSelect, servers[i], {i % 3 == 0 ? 5 : 0, 0}), (Answer{i % 3 == 0 ? 1 : 0, 0}));
    ZfxCloseSocket(clients[i]);
    ZfxCloseSocket(servers[i]);
  }
  ZfxCloseSocket(listener);
  EXPECT_EQ(support::open_descriptors(), before);
}

}  // namespace
