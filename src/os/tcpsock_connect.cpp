// Connecting to a host and listening on a port.
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "database_entry.hpp"
#include "handles.hpp"
#include "tcpsock.h"

namespace {

constexpr int kBacklog = 4096;
constexpr int32_t kHighestPort = 65535;

bool is_port(int32_t port) {
  return port >= 0 && port <= kHighestPort;
}

sockaddr_in any_address(int32_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  return address;
}

const sockaddr *generic(const sockaddr_in &address) {
  return reinterpret_cast<const sockaddr *>(&address);
}

int32_t stream_socket() {
  return ZfxCreateSocket(AF_INET, SOCK_STREAM);
}

bool switch_on(int socket, int option) {
  const int on = 1;
  return ::setsockopt(socket, SOL_SOCKET, option, &on, sizeof on) == 0;
}

// A host that the resolver does not know leaves 0 in errno, which no caller may take for success.
int resolver_error() {
  return errno != 0 ? errno : EHOSTUNREACH;
}

// The first IPv4 address of the host; 0, or an errno value.
int resolve(const char *host, in_addr &address) {
  zorvcrt::DatabaseEntry<hostent> entry;
  int unused = 0;  // the resolver's own error number
  const auto by_name = [&](hostent *found, char *area, std::size_t size, hostent **result) {
    return ::gethostbyname_r(host, found, area, size, result, &unused);
  };
  const auto by_address = [&](hostent *found, char *area, std::size_t size, hostent **result) {
    const auto length = static_cast<socklen_t>(std::strlen(host));
    return ::gethostbyaddr_r(host, length, AF_INET, found, area, size, result, &unused);
  };
  // Without memory nothing is known about the name yet, so it is not taken for an address.
  const bool found = entry.look_up(by_name) || (errno != ENOMEM && entry.look_up(by_address));
  if (!found) return resolver_error();
  if (entry->h_addrtype != AF_INET || entry->h_addr_list[0] == nullptr) return EHOSTUNREACH;
  std::memcpy(&address, entry->h_addr_list[0], sizeof address);
  return 0;
}

}  // namespace

int32_t ZfxCreateClientSocket(const char *host, int32_t port, int32_t *socket) {
  if (host == nullptr || socket == nullptr || !is_port(port)) return EINVAL;
  zorvcrt::UniqueDescriptor connection(stream_socket());  // connect() tells when there is none
  switch_on(connection.get(), SO_KEEPALIVE);

  sockaddr_in address = any_address(port);
  if (const int error = resolve(host, address.sin_addr); error != 0) return error;
  if (::connect(connection.get(), generic(address), sizeof address) != 0) return errno;
  *socket = connection.release();
  return 0;
}

int32_t ZfxCreateListenSocket(int32_t *socket, int32_t port) {
  if (socket == nullptr || !is_port(port)) return EINVAL;
  const sockaddr_in address = any_address(port);
  zorvcrt::UniqueDescriptor listener(stream_socket());
  *socket = listener.get();
  const bool listens = listener.is_open() && (port == 0 || switch_on(listener.get(), SO_REUSEADDR)) &&
                       switch_on(listener.get(), SO_KEEPALIVE) &&
                       ::bind(listener.get(), generic(address), sizeof address) == 0 &&
                       ::listen(listener.get(), kBacklog) == 0;
  if (!listens) return errno;
  listener.release();
  return 0;
}

int32_t ZfxCreateDynamicListenSocket(int32_t *socket, int32_t *port) {
  if (port != nullptr) *port = 0;
  const int32_t result = ZfxCreateListenSocket(socket, 0);
  if (result != 0 || port == nullptr) return result;

  zorvcrt::UniqueDescriptor listener(*socket);
  sockaddr_in address = {};
  socklen_t length = sizeof address;
  if (::getsockname(listener.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0) return errno;
  *port = ntohs(address.sin_port);
  listener.release();
  return 0;
}
