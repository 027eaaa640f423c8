// zorvcrt listen: gives every line that arrives back to its sender.
#include <zorvcrt.h>

#include <csignal>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"
#include "line_socket.hpp"

namespace tools {

namespace {

constexpr int32_t kHighestPort = 65535;
constexpr int32_t kNoLimit = -1;

struct Listener {
  ~Listener() { ZfxCloseSocket(socket); }
  int32_t socket = -1;
};

void listen_on(int32_t wanted, Listener &listener) {
  int32_t port = wanted;
  const int32_t error = wanted == 0 ? ZfxCreateDynamicListenSocket(&listener.socket, &port)
                                    : ZfxCreateListenSocket(&listener.socket, wanted);
  if (error != 0) {
    listener.socket = -1;
    throw Failure("port " + std::to_string(wanted) + ": " + std::strerror(error));
  }
  std::printf("listening on port %d\n", port);
  std::fflush(stdout);
}

void serve(int32_t socket) {
  LineSocket connection(socket);
  while (const auto line = connection.read_line(kNoLimit)) {
    connection.write_line(*line);
  }
}

int run(const Words &words) {
  const Arguments arguments(words, {"--once"}, {});
  arguments.require_operands(1, 1);
  const int32_t port = number_of(arguments.operands()[0], "port", 0, kHighestPort);
  std::signal(SIGPIPE, SIG_IGN);
  Listener listener;
  listen_on(port, listener);
  do {
    const int32_t socket = ZfxAccept(listener.socket, nullptr, nullptr);
    if (socket < 0) throw Failure(std::string("accepting: ") + std::strerror(errno));
    try {
      serve(socket);
    } catch (const Failure &failure) {  // of one client; the next one is not concerned
      std::fprintf(stderr, "zorvcrt listen: %s\n", failure.what());
    }
  } while (!arguments.has("--once"));
  return kSuccess;
}

}  // namespace

const Command kListenCommand = {
    "listen", "PORT [--once]", "echo the lines of 'zorvcrt connect' on a TCP port",
    "PORT is 1 to 65535, or 0 for one that the system chooses; it is printed once clients can connect.\n"
    "Clients are served one after the other, with --once only the first.\n",
    run};

}  // namespace tools
