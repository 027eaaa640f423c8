// zorvcrt connect: sends the lines of standard input to a server and prints what it answers.
#include <zorvcrt.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"
#include "line_socket.hpp"
#include "streams.hpp"

namespace tools {

namespace {

constexpr int32_t kHighestPort = 65535;
constexpr const char *kUsualTimeout = "10000";
constexpr uint32_t kDiscard = 1;

int32_t connected(const std::string &host, int32_t port) {
  int32_t socket = -1;
  const int32_t error = ZfxCreateClientSocket(host.c_str(), port, &socket);
  if (error != 0) throw Failure(host + " port " + std::to_string(port) + ": " + std::strerror(error));
  return socket;
}

constexpr std::array kOptions = {
    Option{"--timeout", "", "MS", "how long a whole answer may take, 10000 by default"}};

int run(const Arguments &arguments) {
  arguments.require_operands(2, 2);
  const int32_t port = number_of(arguments.operands()[1], "port", 0, kHighestPort);
  const int32_t timeout =
      number_of(arguments.value("--timeout").value_or(kUsualTimeout), "number of milliseconds", 0);
  std::signal(SIGPIPE, SIG_IGN);
  LineSocket connection(connected(arguments.operands()[0], port));
  std::array<char, kLongestLine + 1> line;
  while (safe_gets(line.data(), line.size(), kDiscard) != nullptr) {
    connection.write_line(line.data());
    const auto answer = connection.read_line(timeout);
    if (!answer) throw Failure("the server has closed the connection");
    std::puts(answer->c_str());
    flush_output();
  }
  if (std::ferror(stdin) != 0) throw Failure("standard input cannot be read");
  return kSuccess;
}

}  // namespace

const Command kConnectCommand = {
    "connect",
    "HOST PORT",
    "send lines to a TCP server and print its answers",
    kOptions,
    "Every line of standard input, cut at 4095 characters, is sent and answered by one line before the\n"
    "next one is read.\n",
    run};

}  // namespace tools
