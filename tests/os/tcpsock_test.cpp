#include "tcpsock.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/mount.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "children.hpp"
#include "exec.h"
#include "files.hpp"
#include "next_function.hpp"
#include "private_root.hpp"
#include "zfxmemory.h"

namespace {

// Calls that can be made to fail, and what they were given.
int failing_option = -1;
bool getsockname_fails = false;
bool listen_fails = false;
int backlog = -1;

}  // namespace

extern "C" int setsockopt(int socket, int level, int option, const void *value, socklen_t length) noexcept {
  if (level == SOL_SOCKET && option == failing_option) {
    errno = ENOPROTOOPT;
    return -1;
  }
  static const auto real =
      support::next_function<int (*)(int, int, int, const void *, socklen_t)>("setsockopt");
  return real(socket, level, option, value, length);
}

extern "C" int getsockname(int socket, sockaddr *address, socklen_t *length) noexcept {
  if (getsockname_fails) {
    errno = ENOBUFS;
    return -1;
  }
  static const auto real = support::next_function<int (*)(int, sockaddr *, socklen_t *)>("getsockname");
  return real(socket, address, length);
}

extern "C" int listen(int socket, int given_backlog) noexcept {
  backlog = given_backlog;
  if (listen_fails) {
    errno = EOPNOTSUPP;
    return -1;
  }
  static const auto real = support::next_function<int (*)(int, int)>("listen");
  return real(socket, given_backlog);
}

namespace {

constexpr int32_t kUntouched = -77;

int option_of(int socket, int option) {
  int value = -1;
  socklen_t length = sizeof value;
  EXPECT_EQ(::getsockopt(socket, SOL_SOCKET, option, &value, &length), 0);
  return value;
}

bool is_open(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1;
}

bool closes_on_exec(int descriptor) {
  return (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

class SocketTest : public children::ChildTest {
 protected:
  void SetUp() override {
    ChildTest::SetUp();
    std::signal(SIGPIPE, SIG_IGN);
    before_ = support::open_descriptors();
  }
  void TearDown() override {
    failing_option = -1;
    getsockname_fails = false;
    listen_fails = false;
    EXPECT_EQ(support::open_descriptors(), before_) << "a descriptor was leaked";
    ChildTest::TearDown();
  }

 private:
  int before_ = 0;
};

// A listener on a port that the system chose.
struct Listener {
  Listener() { EXPECT_EQ(ZfxCreateDynamicListenSocket(&socket, &port), 0); }
  ~Listener() { EXPECT_EQ(ZfxCloseSocket(socket), 0); }
  Listener(const Listener &) = delete;
  Listener &operator=(const Listener &) = delete;

  [[nodiscard]] int32_t connect(const char *host = "127.0.0.1") const {
    int32_t connection = -1;
    EXPECT_EQ(ZfxCreateClientSocket(host, port, &connection), 0) << host;
    return connection;
  }
  [[nodiscard]] int32_t accept() const { return ZfxAccept(socket, nullptr, nullptr); }

  int32_t socket = -1;
  int32_t port = 0;
};

// The two ends of a connection.
struct Connection {
  Connection() {
    const Listener listener;
    client = listener.connect();
    server = listener.accept();
    EXPECT_GE(server, 0);
  }
  ~Connection() {
    ZfxCloseSocket(client);
    ZfxCloseSocket(server);
  }
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  void close_server() {
    EXPECT_EQ(ZfxCloseSocket(server), 0);
    server = -1;
  }

  int32_t client = -1;
  int32_t server = -1;
};

std::string received(int32_t socket, std::size_t count) {
  std::string text;
  while (text.size() < count) {
    char block[65536];
    const auto wanted = static_cast<uint32_t>(std::min(sizeof block, count - text.size()));
    const int32_t got = ZfxSocketRead(socket, block, wanted);
    if (got <= 0) break;
    text.append(block, static_cast<std::size_t>(got));
  }
  return text;
}

using ZfxStartNetwork = SocketTest;
using ZfxObtainSocketTest = SocketTest;
using ZfxCreateSocketTest = SocketTest;
using ZfxCloseSocketTest = SocketTest;
using ZfxCreateClientSocketTest = SocketTest;
using ZfxCreateListenSocketTest = SocketTest;
using ZfxCreateDynamicListenSocketTest = SocketTest;
using ZfxAcceptTest = SocketTest;
using ZfxSocketReadTest = SocketTest;
using ZfxSocketWriteTest = SocketTest;
using ZfxSocketPrintfTest = SocketTest;
using TcpTraffic = SocketTest;

TEST_F(ZfxStartNetwork, DoesNothing) {
  EXPECT_EQ(::ZfxStartNetwork(), 0);
  ::ZfxStopNetwork();
}

TEST_F(ZfxObtainSocketTest, StoresZeroAndOne) {
  int32_t socket = kUntouched;
  int32_t flag = kUntouched;
  EXPECT_EQ(ZfxObtainSocket(5, 6, &socket, &flag), 0);
  EXPECT_EQ(socket, 0);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(ZfxObtainSocket(5, 6, &socket, nullptr), 0);
  EXPECT_EQ(ZfxObtainSocket(5, 6, nullptr, nullptr), 0);
}

TEST_F(ZfxCreateSocketTest, GivesASocketOfTheKindThatIsNotInherited) {
  for (const int type : {SOCK_STREAM, SOCK_DGRAM}) {
    const int32_t socket = ZfxCreateSocket(AF_INET, type);
    EXPECT_EQ(option_of(socket, SO_TYPE), type);
    EXPECT_EQ(option_of(socket, SO_DOMAIN), AF_INET);
    EXPECT_TRUE(closes_on_exec(socket));
    EXPECT_EQ(ZfxCloseSocket(socket), 0);
  }
  EXPECT_EQ(ZfxCreateSocket(-1, SOCK_STREAM), -1);
  EXPECT_EQ(errno, EAFNOSUPPORT);
}

TEST_F(ZfxCloseSocketTest, ClosesNothingForMinusOneAndZero) {
  EXPECT_EQ(ZfxCloseSocket(-1), 0);
  const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int saved = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
  ::dup2(null, 0);
  EXPECT_EQ(ZfxCloseSocket(0), 1);
  EXPECT_TRUE(is_open(0));
  if (saved >= 0) {
    ::dup2(saved, 0);
    ::close(saved);
  }
  ::close(null);
}

TEST_F(ZfxCloseSocketTest, GivesTheResultOfCloseOtherwise) {
  const int32_t socket = ZfxCreateSocket(AF_INET, SOCK_STREAM);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(ZfxCloseSocket(-2), -1);
}

TEST_F(ZfxCloseSocketTest, ReleasesTheBlockToo) {
  EXPECT_EQ(ZfxCloseSocketEx(ZfxCreateSocket(AF_INET, SOCK_STREAM), ZfxMemAlloc(100)), 0);
  EXPECT_EQ(ZfxCloseSocketEx(0, ZfxMemAlloc(100)), 1);  // a leak shows in the instrumented builds
  EXPECT_EQ(ZfxCloseSocketEx(-1, nullptr), 0);
}

TEST_F(ZfxCreateClientSocketTest, ConnectsByNameAndByAddressWithKeepAlive) {
  const Listener listener;
  if (::access("/etc/hosts", R_OK) != 0) GTEST_SKIP() << "the machine has no /etc/hosts that names localhost";
  for (const char *host : {"localhost", "127.0.0.1", "127.1"}) {
    const int32_t client = listener.connect(host);
    EXPECT_EQ(option_of(client, SO_KEEPALIVE), 1);
    EXPECT_TRUE(closes_on_exec(client));
    EXPECT_EQ(ZfxCloseSocket(listener.accept()), 0);
    EXPECT_EQ(ZfxCloseSocket(client), 0);
  }
}

TEST_F(ZfxCreateClientSocketTest, ReportsAClosedPortAndStoresNoSocket) {
  // Bound and not listening, so that no other program can take the port meanwhile.
  const int32_t bound = ZfxCreateSocket(AF_INET, SOCK_STREAM);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ASSERT_EQ(::bind(bound, reinterpret_cast<sockaddr *>(&address), length), 0);
  ASSERT_EQ(::getsockname(bound, reinterpret_cast<sockaddr *>(&address), &length), 0);
  int32_t socket = kUntouched;
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", ntohs(address.sin_port), &socket), ECONNREFUSED);
  EXPECT_EQ(socket, kUntouched);
  EXPECT_EQ(ZfxCloseSocket(bound), 0);
}

TEST_F(ZfxCreateClientSocketTest, ReportsAHostThatIsNotFoundAndStoresNoSocket) {
  const support::EnvironmentVariable quick("RES_OPTIONS", "timeout:1 attempts:1");
  const Listener listener;  // which no host that is not found leads to
  for (const char *host : {"a..b", "300.300.300.300.300"}) {
    int32_t socket = kUntouched;
    EXPECT_GT(ZfxCreateClientSocket(host, listener.port, &socket), 0) << host;
    EXPECT_EQ(socket, kUntouched);
  }
}

TEST_F(ZfxCreateClientSocketTest, DoesNotCheckItsFirstTwoSteps) {
  const Listener listener;
  int32_t socket = kUntouched;
  failing_option = SO_KEEPALIVE;
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", listener.port, &socket), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);

  socket = kUntouched;
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const int lowest_free = ::dup(listener.socket);
  ::close(lowest_free);
  const rlimit exhausted = {static_cast<rlim_t>(lowest_free), limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &exhausted), 0);
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", listener.port, &socket), EBADF);
  EXPECT_EQ(socket, kUntouched);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST_F(ZfxCreateClientSocketTest, RefusesMissingArgumentsAndImpossiblePorts) {
  int32_t socket = kUntouched;
  EXPECT_EQ(ZfxCreateClientSocket(nullptr, 80, &socket), EINVAL);
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", 80, nullptr), EINVAL);
  for (const int32_t port : {-1, 65536, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &socket), EINVAL);
  }
  EXPECT_EQ(socket, kUntouched);
}

// With a host database of the test's own.
class HostDatabase : public support::FixedPathsTest {
 protected:
  void SetUp() override {
    FixedPathsTest::SetUp();
    if (IsSkipped()) return;
    if (::access("/etc/hosts", R_OK) != 0) GTEST_SKIP() << "the machine has no /etc/hosts to be replaced";
    support::write_file(folder_ / "hosts", "127.1.1.1 first-of-two reverse\n127.1.1.2 first-of-two\n");
    ASSERT_EQ(::mount((folder_ / "hosts").c_str(), "/etc/hosts", "none", MS_BIND, nullptr), 0);
  }
  void TearDown() override { ::umount2("/etc/hosts", MNT_DETACH); }

  // The address that a connection to the host reaches.
  static std::string reached(const char *host) {
    const Listener listener;
    const int32_t client = listener.connect(host);
    sockaddr_in peer = {};
    socklen_t length = sizeof peer;
    EXPECT_EQ(::getpeername(client, reinterpret_cast<sockaddr *>(&peer), &length), 0);
    EXPECT_EQ(ZfxCloseSocket(listener.accept()), 0);
    EXPECT_EQ(ZfxCloseSocket(client), 0);
    char text[INET_ADDRSTRLEN] = "";
    return ::inet_ntop(AF_INET, &peer.sin_addr, text, sizeof text);
  }

 private:
  support::TemporaryFolder folder_;
};

TEST_F(HostDatabase, FirstAddressOfAHostIsTaken) {
  EXPECT_EQ(reached("first-of-two"), "127.1.1.1");
}

TEST_F(HostDatabase, HostTextItselfIsTriedAsTheBytesOfAnAddress) {
  const support::EnvironmentVariable quick("RES_OPTIONS", "timeout:1 attempts:1");
  EXPECT_EQ(reached("\x7f\x01\x01\x01"), "127.1.1.1");
}

TEST_F(ZfxCreateListenSocketTest, ListensOnTheGivenPort) {
  int32_t port = 0;
  {
    const Listener free_port;
    port = free_port.port;
  }
  int32_t socket = kUntouched;
  ASSERT_EQ(ZfxCreateListenSocket(&socket, port), 0);
  EXPECT_EQ(option_of(socket, SO_ACCEPTCONN), 1);
  EXPECT_EQ(option_of(socket, SO_REUSEADDR), 1);
  EXPECT_EQ(option_of(socket, SO_KEEPALIVE), 1);
  EXPECT_EQ(backlog, 4096);
  EXPECT_TRUE(closes_on_exec(socket));
  int32_t client = -1;
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &client), 0);
  EXPECT_EQ(ZfxCloseSocket(client), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);
}

TEST_F(ZfxCreateListenSocketTest, LetsTheSystemChooseForZeroWithoutReuse) {
  int32_t socket = kUntouched;
  ASSERT_EQ(ZfxCreateListenSocket(&socket, 0), 0);
  EXPECT_EQ(option_of(socket, SO_ACCEPTCONN), 1);
  EXPECT_EQ(option_of(socket, SO_REUSEADDR), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);
}

TEST_F(ZfxCreateListenSocketTest, ReportsAPortInUseAndLeavesAClosedDescriptorInTheStore) {
  const Listener first;
  int32_t socket = kUntouched;
  EXPECT_EQ(ZfxCreateListenSocket(&socket, first.port), EADDRINUSE);
  EXPECT_GT(socket, 0);
  EXPECT_FALSE(is_open(socket));
}

TEST_F(ZfxCreateListenSocketTest, ReportsTheStepThatFails) {
  int32_t socket = kUntouched;
  failing_option = SO_REUSEADDR;
  EXPECT_EQ(ZfxCreateListenSocket(&socket, 12345), ENOPROTOOPT);
  EXPECT_FALSE(is_open(socket));
  failing_option = SO_KEEPALIVE;
  EXPECT_EQ(ZfxCreateListenSocket(&socket, 0), ENOPROTOOPT);
  failing_option = -1;
  listen_fails = true;
  EXPECT_EQ(ZfxCreateListenSocket(&socket, 0), EOPNOTSUPP);
  int32_t port = kUntouched;
  EXPECT_EQ(ZfxCreateDynamicListenSocket(&socket, &port), EOPNOTSUPP);
  EXPECT_EQ(port, 0);
}

TEST_F(ZfxCreateListenSocketTest, ReportsThatThereAreNoDescriptorsLeft) {
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const int lowest_free = ::dup(2);
  ::close(lowest_free);
  const rlimit exhausted = {static_cast<rlim_t>(lowest_free), limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &exhausted), 0);
  int32_t socket = kUntouched;
  EXPECT_EQ(ZfxCreateListenSocket(&socket, 0), EMFILE);
  EXPECT_EQ(socket, -1);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST_F(ZfxCreateListenSocketTest, RefusesAMissingStoreAndImpossiblePorts) {
  EXPECT_EQ(ZfxCreateListenSocket(nullptr, 0), EINVAL);
  int32_t socket = kUntouched;
  for (const int32_t port : {-1, 65536, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(ZfxCreateListenSocket(&socket, port), EINVAL);
  }
  EXPECT_EQ(socket, kUntouched);
}

TEST_F(ZfxCreateDynamicListenSocketTest, TellsThePortThatClientsConnectTo) {
  int32_t socket = kUntouched;
  int32_t port = kUntouched;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&socket, &port), 0);
  EXPECT_GT(port, 0);
  EXPECT_LE(port, 65535);
  int32_t client = -1;
  EXPECT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &client), 0);
  EXPECT_EQ(ZfxCloseSocket(client), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);
}

TEST_F(ZfxCreateDynamicListenSocketTest, NeedsNoPlaceForThePortButOneForTheSocket) {
  int32_t socket = kUntouched;
  getsockname_fails = true;  // and so does not ask for it
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&socket, nullptr), 0);
  EXPECT_EQ(ZfxCloseSocket(socket), 0);
  int32_t port = kUntouched;
  EXPECT_EQ(ZfxCreateDynamicListenSocket(nullptr, &port), EINVAL);
  EXPECT_EQ(port, 0);
}

TEST_F(ZfxCreateDynamicListenSocketTest, ClosesTheSocketWhenThePortCannotBeRead) {
  int32_t socket = kUntouched;
  int32_t port = kUntouched;
  getsockname_fails = true;
  EXPECT_EQ(ZfxCreateDynamicListenSocket(&socket, &port), ENOBUFS);
  EXPECT_EQ(port, 0);
  EXPECT_FALSE(is_open(socket));
}

TEST_F(ZfxAcceptTest, GivesTheConnectionAndTheAddressOfThePeer) {
  const Listener listener;
  const int32_t client = listener.connect();
  sockaddr_in own = {};
  sockaddr_in peer = {};
  socklen_t length = sizeof own;
  ASSERT_EQ(::getsockname(client, reinterpret_cast<sockaddr *>(&own), &length), 0);
  length = sizeof peer;
  const int32_t server = ZfxAccept(listener.socket, reinterpret_cast<sockaddr *>(&peer), &length);
  EXPECT_EQ(length, sizeof peer);
  EXPECT_EQ(peer.sin_port, own.sin_port);
  EXPECT_TRUE(closes_on_exec(server));
  EXPECT_EQ(ZfxCloseSocket(server), 0);
  EXPECT_EQ(ZfxCloseSocket(client), 0);
}

TEST_F(ZfxAcceptTest, FailsAsAcceptDoes) {
  EXPECT_EQ(ZfxAccept(-1, nullptr, nullptr), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(ZfxAcceptTest, ExtendedFormClearsTheValueInEveryCase) {
  const Listener listener;
  const int32_t client = listener.connect();
  uint64_t value = 77;
  const int32_t server = ZfxAcceptEx(listener.socket, &value, nullptr, nullptr);
  EXPECT_GE(server, 0);
  EXPECT_EQ(value, 0U);
  value = 77;
  EXPECT_EQ(ZfxAcceptEx(-1, &value, nullptr, nullptr), -1);
  EXPECT_EQ(value, 0U);
  EXPECT_EQ(ZfxAcceptEx(-1, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(ZfxCloseSocket(server), 0);
  EXPECT_EQ(ZfxCloseSocket(client), 0);
}

TEST_F(ZfxSocketReadTest, GivesBytesThenZeroAtTheEnd) {
  Connection connection;
  EXPECT_EQ(ZfxSocketWrite(connection.server, "text", 4), 4);
  connection.close_server();
  char block[16] = "";
  EXPECT_EQ(ZfxSocketRead(connection.client, block, 3), 3);
  EXPECT_STREQ(block, "tex");
  EXPECT_EQ(ZfxSocketRead(connection.client, block, sizeof block), 1);
  EXPECT_EQ(ZfxSocketRead(connection.client, block, sizeof block), 0);
}

TEST_F(ZfxSocketReadTest, FailsForAClosedDescriptorAndForAResetConnection) {
  char block[16] = "";
  EXPECT_EQ(ZfxSocketRead(-1, block, sizeof block), -1);
  EXPECT_EQ(errno, EBADF);
  Connection connection;
  EXPECT_EQ(ZfxSocketWrite(connection.client, "never read", 10), 10);
  connection.close_server();  // with unread bytes: a reset, not an end
  EXPECT_EQ(ZfxSocketRead(connection.client, block, sizeof block), -1);
  EXPECT_EQ(errno, ECONNRESET);
}

TEST_F(ZfxSocketReadTest, FailsForANullBuffer) {
  const Connection connection;
  EXPECT_EQ(ZfxSocketWrite(connection.server, "text", 4), 4);
  EXPECT_EQ(ZfxSocketRead(connection.client, nullptr, 4), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(ZfxSocketWrite(connection.server, nullptr, 4), -1);
  EXPECT_EQ(errno, EFAULT);
}

TEST_F(ZfxSocketWriteTest, WritesPartOfWhatDoesNotFitAndTheRestLater) {
  const Connection connection;
  ASSERT_EQ(::fcntl(connection.server, F_SETFL, O_NONBLOCK), 0);
  std::string sent(32U << 20U, '\0');
  for (std::size_t i = 0; i < sent.size(); ++i) {
    sent[i] = static_cast<char>(i % 251);
  }
  const int32_t first = ZfxSocketWrite(connection.server, sent.data(), static_cast<uint32_t>(sent.size()));
  ASSERT_GT(first, 0);
  ASSERT_LT(static_cast<std::size_t>(first), sent.size()) << "the system took all at once";
  timeval none = {};
  int32_t error = kUntouched;
  EXPECT_EQ(ZfxSocketWriteSelect(connection.server, &none, &error), 0);
  EXPECT_EQ(error, 0);

  std::thread writer([&] {
    auto done = static_cast<std::size_t>(first);
    while (done < sent.size() && ZfxSocketWriteSelect(connection.server, nullptr, nullptr) == 1) {
      const int32_t count =
          ZfxSocketWrite(connection.server, sent.data() + done, static_cast<uint32_t>(sent.size() - done));
      if (count <= 0) break;
      done += static_cast<std::size_t>(count);
    }
  });
  EXPECT_TRUE(received(connection.client, sent.size()) == sent);
  writer.join();
}

TEST_F(ZfxSocketWriteTest, FailsOnceThePeerIsGone) {
  Connection connection;
  connection.close_server();
  int32_t result = 0;
  for (int i = 0; i < 1000 && result >= 0; ++i) {
    result = ZfxSocketWrite(connection.client, "x", 1);  // the first ones still get under way
    ::usleep(1000);
  }
  EXPECT_EQ(result, -1);
  EXPECT_TRUE(errno == EPIPE || errno == ECONNRESET) << errno;
}

TEST_F(ZfxSocketPrintfTest, SendsTheFormattedText) {
  const Connection connection;
  EXPECT_EQ(ZfxSocketPrintf(connection.server, "%s %d\n", "line", 7), 7);
  EXPECT_EQ(received(connection.client, 7), "line 7\n");
}

TEST_F(ZfxSocketPrintfTest, GivesZeroForAnEmptyTextOrOneThatCannotBeFormatted) {
  const Connection connection;
  EXPECT_EQ(ZfxSocketPrintf(connection.server, "%s", ""), 0);
  EXPECT_EQ(ZfxSocketPrintf(connection.server, nullptr), 0);
  EXPECT_EQ(ZfxSocketPrintf(connection.server, "%lc", static_cast<wint_t>(0xd800)), 0);
  EXPECT_EQ(ZfxSocketPrintf(-1, "%s", ""), 0);
  EXPECT_EQ(ZfxSocketPrintf(-1, "text"), -1);
}

TEST_F(ZfxSocketPrintfTest, CutsATextThatIsLongerThanItsArea) {
  const Connection connection;
  for (const std::size_t length : {16382U, 16383U, 16384U, 16385U, 100000U}) {
    const std::string text(length, 'x');
    const std::size_t kept = std::min<std::size_t>(length, 16383);
    EXPECT_EQ(ZfxSocketPrintf(connection.server, "%s", text.c_str()), static_cast<int32_t>(kept));
    EXPECT_EQ(received(connection.client, kept), text.substr(0, kept));
  }
}

TEST_F(TcpTraffic, NoSocketReachesAChild) {
  const Listener listener;
  const Connection connection;
  const int32_t plain = ZfxCreateSocket(AF_INET, SOCK_STREAM);
  const children::Stream output;
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR("/bin/sh -c 'ls -l /proc/self/fd'", 1, -1, output.get(), -1, &process), 0);
  EXPECT_EQ(output.text().find("socket:"), std::string::npos) << output.text();
  EXPECT_NE(output.text().find("memfd:"), std::string::npos) << output.text();
  EXPECT_EQ(ZfxCloseSocket(plain), 0);
}

// A server that gives every line back, connection after connection.
void serve_echo(const Listener &listener, int connections) {
  for (int i = 0; i < connections; ++i) {
    const int32_t server = listener.accept();
    char line[256];
    for (int32_t count = 0; (count = ZfxSocketRead(server, line, sizeof line)) > 0;) {
      ZfxSocketWrite(server, line, static_cast<uint32_t>(count));
    }
    ZfxCloseSocket(server);
  }
}

TEST_F(TcpTraffic, ServesThousandsOfConnectionsFromSeveralClients) {
  constexpr int kClients = 4;
  constexpr int kConnections = 500;
  const Listener listener;
  std::thread server([&] { serve_echo(listener, kClients * kConnections); });
  std::atomic<int> echoed = 0;
  std::vector<std::thread> clients;
  for (int i = 0; i < kClients; ++i) {
    clients.emplace_back([&, i] {
      for (int round = 0; round < kConnections; ++round) {
        const int32_t client = listener.connect();
        const std::string line = std::to_string(i) + ":" + std::to_string(round) + "\n";
        ZfxSocketPrintf(client, "%s", line.c_str());
        echoed += received(client, line.size()) == line ? 1 : 0;
        ZfxCloseSocket(client);
      }
    });
  }
  for (std::thread &client : clients) {
    client.join();
  }
  server.join();
  EXPECT_EQ(echoed, kClients * kConnections);
}

}  // namespace
