// zorvcrt listen: gives every line that arrives back to its sender.
#include <zorvcrt.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"
#include "line_socket.hpp"
#include "records.hpp"
#include "streams.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

constexpr int32_t kHighestPort = 65535;
constexpr int32_t kNoLimit = -1;

struct Listener {
  ~Listener() { ZfxCloseSocket(socket); }
  int32_t socket = -1;
};

int32_t listen_on(int32_t wanted, Listener &listener) {
  int32_t port = wanted;
  const int32_t error = wanted == 0 ? ZfxCreateDynamicListenSocket(&listener.socket, &port)
                                    : ZfxCreateListenSocket(&listener.socket, wanted);
  if (error != 0) {
    listener.socket = -1;
    throw Failure("port " + std::to_string(wanted) + ": " + std::strerror(error));
  }
  return port;
}

// A server whose port nobody gets to know would wait in vain.
void announce(int32_t port, bool as_json) {
  if (as_json) {
    print_json(JsonRecord().add("port", json_number(port)).take());
  } else {
    std::printf("listening on port %d\n", port);
  }
  flush_output();
}

void serve(int32_t socket) {
  LineSocket connection(socket);
  while (const auto line = connection.read_line(kNoLimit)) {
    connection.write_line(*line);
  }
}

constexpr std::array kOptions = {Option{"--once", "", "", "end after the first client"}, kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(1, 1);
  const int32_t port = number_of(arguments.operands()[0], "port", 0, kHighestPort);
  std::signal(SIGPIPE, SIG_IGN);
  Listener listener;
  announce(listen_on(port, listener), arguments.wants_json());
  do {
    const int32_t socket = ZfxAccept(listener.socket, nullptr, nullptr);
    if (socket < 0) throw Failure(std::string("accepting: ") + std::strerror(errno));
    try {
      serve(socket);
    } catch (const Failure &failure) {  // of one client; the next one is not concerned
      complain("listen", failure.what());
    }
  } while (!arguments.has("--once"));
  return kSuccess;
}

}  // namespace

const Command kListenCommand = {
    "listen",
    "PORT",
    "echo the lines of 'zorvcrt connect' on a TCP port",
    kOptions,
    "PORT is 1 to 65535, or 0 for one that the system chooses; it is printed once clients can connect.\n"
    "Clients are served one after the other.\n",
    run};

}  // namespace tools
