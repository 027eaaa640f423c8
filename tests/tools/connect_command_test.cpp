#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zorvcrt.h>

#include <chrono>
#include <regex>
#include <string>
#include <thread>

#include "run.hpp"

namespace {

using support::run_zorvcrt;

std::string line_from(int descriptor) {
  std::string line;
  for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';) {
    line += c;
  }
  return line;
}

// "zorvcrt listen" on a port that the system chose, until the end of the test.
class Server {
 public:
  explicit Server(const std::string &options = "") {
    int pipe[2];
    EXPECT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    const std::string command = ZORVCRT_BINARY_DIR "/tools/zorvcrt listen 0 " + options;
    EXPECT_EQ(ZfxExecPR(command.c_str(), 0, -1, pipe[1], -1, &process_), 0);
    ::close(pipe[1]);
    const std::string line = line_from(pipe[0]);
    ::close(pipe[0]);
    EXPECT_TRUE(line.starts_with("listening on port ")) << line;
    port_ = line.substr(line.rfind(' ') + 1);
  }
  ~Server() {
    ZfxKillProcess(process_);
    ZfxWaitProcess(process_, -1, nullptr);
  }
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  [[nodiscard]] const std::string &port() const { return port_; }
  [[nodiscard]] int32_t exit_code() const {
    int32_t code = -1;
    EXPECT_EQ(ZfxWaitProcess(process_, -1, &code), 1);
    return code;
  }
  [[nodiscard]] support::Outcome connect(const std::string &input) const {
    return run_zorvcrt({"connect", "127.0.0.1", port_}, input);
  }

 private:
  uint32_t process_ = 0;
  std::string port_;
};

TEST(ConnectCommand, GetsEveryLineBackFromTheServerClientAfterClient) {
  const Server server;
  for (const char *name : {"first", "second"}) {
    const std::string text = std::string(name) + "\n\nclient's line\n";
    const auto outcome = server.connect(text);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, text);
    EXPECT_EQ(outcome.errors, "");
  }
}

TEST(ConnectCommand, CutsLongLinesAndTakesOtherLineEnds) {
  const Server server;
  const std::string longest(4095, 'x');
  const auto outcome = server.connect(longest + "\n" + longest + "y\ndos\r\nlast");
  EXPECT_TRUE(outcome.output == longest + "\n" + longest + "\ndos\nlast\n") << outcome.output.size();
}

TEST(ConnectCommand, FailsInOneLineWhereNobodyListens) {
  const auto outcome = run_zorvcrt({"connect", "127.0.0.1", "0"}, "x\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.errors.starts_with("zorvcrt connect: 127.0.0.1 port 0: ")) << outcome.errors;
}

// A server of the test's own that accepts connections and gives no answer.
TEST(ConnectCommand, WaitsForAnAnswerNoLongerThanItIsTold) {
  int32_t listener = -1;
  int32_t port = 0;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
  const auto outcome = run_zorvcrt({"connect", "127.0.0.1", std::to_string(port), "--timeout=20"}, "x\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt connect: no answer within 20 ms\n");
  ZfxCloseSocket(listener);
}

// A server of the test's own that sends a byte whenever the client would wait once more, and never a line
// end.
TEST(ConnectCommand, LimitsTheWholeAnswerAndNotTheNextByteOfIt) {
  int32_t listener = -1;
  int32_t port = 0;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
  std::thread server([&] {
    timeval longest_wait = {20, 0};
    if (ZfxSocketReadSelect(listener, &longest_wait, nullptr) != 1) return;
    const int32_t client = ZfxAccept(listener, nullptr, nullptr);
    while (::send(client, "x", 1, MSG_NOSIGNAL) == 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ZfxCloseSocket(client);
  });
  const auto outcome = run_zorvcrt({"connect", "127.0.0.1", std::to_string(port), "--timeout=50"}, "x\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt connect: no answer within 50 ms\n");
  server.join();
  ZfxCloseSocket(listener);
}

TEST(ConnectCommand, DoesNotTakeTheConnectionForAClosedStandardInput) {
  const Server server;
  const auto outcome = support::run(
      {"sh", "-c", ZORVCRT_BINARY_DIR "/tools/zorvcrt connect 127.0.0.1 " + server.port() + " <&-"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "zorvcrt connect: standard input cannot be read\n");
}

TEST(ListenCommand, AnnouncesItsPortAsJson) {
  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  uint32_t process = 0;
  const std::string command = ZORVCRT_BINARY_DIR "/tools/zorvcrt listen 0 --output json";
  ASSERT_EQ(ZfxExecPR(command.c_str(), 0, -1, pipe[1], -1, &process), 0);
  const std::string line = line_from(pipe[0]);
  EXPECT_TRUE(std::regex_match(line, std::regex("\\{\"port\":[1-9][0-9]*\\}"))) << line;
  ZfxKillProcess(process);
  ZfxWaitProcess(process, -1, nullptr);
}

TEST(ConnectCommand, RefusesWhatIsNoPortAsMisuse) {
  for (const char *port : {"-1", "65536", "http", ""}) {
    EXPECT_EQ(run_zorvcrt({"connect", "--", "127.0.0.1", port}).status, 2) << port;
    EXPECT_EQ(run_zorvcrt({"listen", "--", port}).status, 2) << port;
  }
  EXPECT_EQ(run_zorvcrt({"connect", "127.0.0.1"}).status, 2);
}

TEST(ListenCommand, EndsAfterTheFirstClientWhenToldSo) {
  const Server server("--once");
  EXPECT_EQ(server.connect("line\n").output, "line\n");
  EXPECT_EQ(server.exit_code(), 0);
}

TEST(ListenCommand, OutlivesAClientThatGoesAway) {
  const Server server;
  int32_t client = -1;
  ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", std::stoi(server.port()), &client), 0);
  ASSERT_GT(ZfxSocketPrintf(client, "half a li"), 0);
  const linger reset = {1, 0};
  ASSERT_EQ(::setsockopt(client, SOL_SOCKET, SO_LINGER, &reset, sizeof reset), 0);
  ZfxCloseSocket(client);
  EXPECT_EQ(server.connect("line\n").output, "line\n");
}

TEST(ListenCommand, FailsInOneLineForAPortInUse) {
  const Server server;
  const auto outcome = run_zorvcrt({"listen", server.port()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt listen: port " + server.port() + ": Address already in use\n");
}

}  // namespace
