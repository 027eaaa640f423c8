// Sockets as descriptors: create, close, accept, read and write. Connecting and listening are in
// tcpsock_connect.cpp, the waits in tcpsock_select.cpp.
#include "tcpsock.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

#include "zfxmemory.h"

namespace {

constexpr std::size_t kPrintRoom = 16384;

}  // namespace

int32_t ZfxStartNetwork(void) {
  return 0;
}

void ZfxStopNetwork(void) {}

int32_t ZfxObtainSocket(int32_t /*unused1*/, int32_t /*unused2*/, int32_t *socket, int32_t *flag) {
  if (socket != nullptr) *socket = 0;
  if (flag != nullptr) *flag = 1;
  return 0;
}

int32_t ZfxCreateSocket(int32_t domain, int32_t type) {
  return ::socket(domain, type | SOCK_CLOEXEC, 0);
}

int32_t ZfxCloseSocket(int32_t socket) {
  if (socket == -1 || socket == 0) return socket + 1;
  return ::close(socket);
}

int32_t ZfxCloseSocketEx(int32_t socket, void *block) {
  const int32_t result = ZfxCloseSocket(socket);
  ZfxMemFree(block);
  return result;
}

int32_t ZfxAccept(int32_t socket, struct sockaddr *address, socklen_t *length) {
  return ::accept4(socket, address, length, SOCK_CLOEXEC);
}

int32_t ZfxAcceptEx(int32_t socket, uint64_t *value, struct sockaddr *address, socklen_t *length) {
  const int32_t connection = ZfxAccept(socket, address, length);
  if (value != nullptr) *value = 0;
  return connection;
}

// The system moves less than 2 GiB at a time, so the counts fit.
int32_t ZfxSocketRead(int32_t socket, void *buffer, uint32_t length) {
  return static_cast<int32_t>(::read(socket, buffer, length));
}

int32_t ZfxSocketWrite(int32_t socket, const void *buffer, uint32_t length) {
  return static_cast<int32_t>(::write(socket, buffer, length));
}

int32_t ZfxSocketPrintf(int32_t socket, const char *format, ...) {
  if (format == nullptr) return 0;
  std::array<char, kPrintRoom> text;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  if (length <= 0) return 0;
  const std::size_t count = std::min(static_cast<std::size_t>(length), text.size() - 1);
  return ZfxSocketWrite(socket, text.data(), static_cast<uint32_t>(count));
}
