// The system's services when the system refuses: the result is the error of the step that failed, and nothing
// stays open.
#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "../os/standard_input.hpp"
#include "CopyDirTree.h"
#include "CreatePath.h"
#include "FileStatus.h"
#include "GetComputerName.h"
#include "GetExecutablePath.h"
#include "GetFileLine.h"
#include "GetTempDir.h"
#include "RelativeDirToAbsolute.h"
#include "call_walk.hpp"
#include "dynlib.h"
#include "exec.h"
#include "files.hpp"
#include "files_only_test.hpp"
#include "gets_legacy.h"
#include "kill.h"
#include "os_samples.hpp"
#include "osuser_unix.h"
#include "procwait.h"
#include "safe_gets.h"
#include "sockredir.h"
#include "tcpsock.h"
#include "thread.h"
#include "tls.h"
#include "usergroups_unix.h"

namespace {

using faults::CallFault;
using faults::kExitWithThree;
using faults::LocalListener;
using faults::SystemCall;

namespace fs = std::filesystem;

// Two connected sockets.
struct Pair {
  Pair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0); }
  ~Pair() {
    ::close(ends[0]);
    ::close(ends[1]);
  }
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;
  int ends[2] = {-1, -1};
};

// For calls that give -1 and leave the reason in errno.
void expect_minus_one(const CallFault &fault, int32_t result, int32_t otherwise) {
  EXPECT_EQ(result, fault.struck() ? -1 : otherwise);
  if (fault.struck()) {
    EXPECT_EQ(errno, fault.error());
  }
}

// The resolver keeps its state from the first time on that a name is no address.
void wake_resolver() {
  hostent entry = {};
  hostent *found = nullptr;
  char area[1024];
  int error = 0;
  ::gethostbyaddr_r("nine char", 9, AF_INET, &entry, area, sizeof area, &found, &error);
}

void connect_to_host(CallFault &fault) {
  wake_resolver();
  const LocalListener listener;
  int32_t socket = -7;
  const int32_t result =
      fault.during([&] { return ZfxCreateClientSocket("127.0.0.1", listener.port, &socket); });
  EXPECT_EQ(result == 0, socket != -7) << "the socket is stored when it is connected";
  if (fault.struck("socket")) {
    EXPECT_NE(result, 0);
    if (!fault.is_persistent()) {
      EXPECT_EQ(result, EBADF) << "told by the connect that has no descriptor";
    }
  } else if (fault.struck("connect")) {
    EXPECT_EQ(result, fault.error());
  } else if (fault.struck("gethostbyname_r")) {
    EXPECT_NE(result, 0);
  } else if (!fault.is_persistent()) {
    EXPECT_EQ(result, 0) << "a connection without SO_KEEPALIVE is a connection";
  }
  if (result == 0) ::close(socket);
}

void listen_on_port(CallFault &fault) {
  const LocalListener other;
  const int32_t port = other.port;
  ::close(other.socket);
  int32_t socket = -7;
  const int32_t result = fault.during([&] { return ZfxCreateListenSocket(&socket, port); });
  EXPECT_EQ(result, fault.error());
  if (fault.struck("socket")) {
    EXPECT_EQ(socket, -1);
  }
  if (result == 0) ::close(socket);
}

void listen_on_any_port(CallFault &fault) {
  int32_t socket = -7;
  int32_t port = -7;
  const int32_t result = fault.during([&] { return ZfxCreateDynamicListenSocket(&socket, &port); });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(port == 0, fault.struck());
  if (result == 0) ::close(socket);
}

void accept_connection(CallFault &fault) {
  const LocalListener listener;
  int32_t client = -1;
  ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", listener.port, &client), 0);
  const int32_t connection = fault.during([&] { return ZfxAccept(listener.socket, nullptr, nullptr); });
  EXPECT_EQ(connection < 0, fault.struck());
  if (fault.struck()) {
    EXPECT_EQ(errno, fault.error());
  }
  const int32_t again = connection >= 0 ? connection : ZfxAccept(listener.socket, nullptr, nullptr);
  EXPECT_GE(again, 0) << "the connection still waits";
  ::close(again);
  ::close(client);
}

void accept_extended(CallFault &fault) {
  const LocalListener listener;
  int32_t client = -1;
  ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", listener.port, &client), 0);
  uint64_t value = 7;
  const int32_t connection =
      fault.during([&] { return ZfxAcceptEx(listener.socket, &value, nullptr, nullptr); });
  EXPECT_EQ(connection < 0, fault.struck());
  EXPECT_EQ(value, 0U);
  if (connection >= 0) ::close(connection);
  ::close(client);
}

void create_socket(CallFault &fault) {
  const int32_t socket = fault.during([] { return ZfxCreateSocket(AF_INET, SOCK_STREAM); });
  EXPECT_EQ(socket < 0, fault.struck());
  if (fault.struck()) {
    EXPECT_EQ(errno, fault.error());
  }
  if (socket >= 0) ::close(socket);
}

void close_socket(CallFault &fault) {
  const int32_t socket = ZfxCreateSocket(AF_INET, SOCK_STREAM);
  expect_minus_one(fault, fault.during([&] { return ZfxCloseSocket(socket); }), 0);
}

void close_socket_and_block(CallFault &fault) {
  const int32_t socket = ZfxCreateSocket(AF_INET, SOCK_STREAM);
  void *block = std::malloc(10);
  expect_minus_one(fault, fault.during([&] { return ZfxCloseSocketEx(socket, block); }), 0);
}

// Moves "text" over a connection, or the first byte of it.
template <auto kMove>
void move_bytes(CallFault &fault) {
  const Pair pair;
  EXPECT_EQ(::write(pair.ends[1], "text", 4), 4);
  const int32_t count = fault.during([&] { return kMove(pair.ends[0]); });
  if (fault.error() == support::kShort) {
    EXPECT_EQ(count, 1);
  } else {
    expect_minus_one(fault, count, 4);
  }
}

template <auto kWait>
void wait_until_ready(CallFault &fault) {
  const Pair pair;
  EXPECT_EQ(::write(pair.ends[1], "x", 1), 1);
  timeval timeout = {0, 0};
  int32_t error = -7;
  const auto wait = [&] { return kWait(pair.ends[0], &timeout, &error); };
  const int32_t result = fault.during(wait);
  EXPECT_EQ(result, fault.struck() ? -1 : 1);
  EXPECT_EQ(error, fault.error());
  EXPECT_EQ(wait(), 1);
}

// Runs "exit 3" and waits; a wait that is interrupted goes on, one that fails gives -1.
template <auto kExecute>
void execute(CallFault &fault) {
  uint32_t process = 0;
  const int32_t result = fault.during([&] { return kExecute(&process); });
  if (fault.struck("fork")) {
    EXPECT_EQ(result, fault.error());
    EXPECT_EQ(process, UINT32_MAX);
  } else if (fault.struck("waitpid") && fault.error() != EINTR) {
    EXPECT_EQ(result, -1);
    EXPECT_EQ(::waitpid(static_cast<pid_t>(process), nullptr, 0), static_cast<pid_t>(process));
  } else {
    EXPECT_EQ(result, 3 * 256);
  }
}

void execute_without_id(CallFault &fault) {
  const int32_t result = fault.during([] { return ZfxExec(kExitWithThree, 1); });
  if (fault.struck("fork")) {
    EXPECT_EQ(result, fault.error());
  } else if (fault.struck("waitpid") && fault.error() != EINTR) {
    EXPECT_EQ(result, -1);
    EXPECT_GT(::waitpid(-1, nullptr, 0), 0);
  } else {
    EXPECT_EQ(result, 3 * 256);
  }
}

void redirect_to_child(CallFault &fault) {
  const Pair pair;
  char program[] = "true";
  char *const arguments[] = {program, nullptr};
  uint32_t process = 0;
  const int32_t result = fault.during([&] {
    return ZfxRedirToChildProcess(0, 0, "/bin/true", 1, arguments, nullptr, 0, pair.ends[0], 0, &process);
  });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(process == UINT32_MAX, fault.struck());
  if (result == 0) {
    EXPECT_EQ(ZfxWaitProcess(process, -1, nullptr), 1);
  }
}

void wait_for_child(CallFault &fault) {
  uint32_t process = 0;
  ASSERT_EQ(ZfxExecP("true", 0, &process), 0);
  int32_t code = -7;
  const int32_t result = fault.during([&] { return ZfxWaitProcess(process, -1, &code); });
  expect_minus_one(fault, result, 1);
  EXPECT_EQ(code, fault.struck() ? -7 : 0);
  if (fault.struck()) {
    EXPECT_EQ(ZfxWaitProcess(process, -1, &code), 1) << "the child is still there to be waited for";
  }
}

template <auto kKill>
void kill_child(CallFault &fault) {
  uint32_t process = 0;
  ASSERT_EQ(ZfxExecP("sleep 100", 0, &process), 0);
  const int32_t result = fault.during([&] { return kKill(process); });
  EXPECT_EQ(result, fault.error());
  if (fault.struck()) {
    EXPECT_EQ(kKill(process), 0);
  }
  EXPECT_EQ(ZfxWaitProcess(process, -1, nullptr), 1);
}

// What cannot be looked at is made; what cannot be made ends the call, with all above it made.
void create_path(CallFault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "a/b";
  const int32_t result = fault.during([&] { return CreatePath(path.c_str()); });
  EXPECT_EQ(result == 0, fs::is_directory(path));
  if (fault.struck("mkdir")) {
    EXPECT_EQ(result, fault.error());
  } else if (!fault.is_persistent()) {
    EXPECT_EQ(result, 0);
  }
  EXPECT_EQ(CreatePath(path.c_str()), 0);
  EXPECT_TRUE(fs::is_directory(path));
}

void copy_tree(CallFault &fault) {
  const faults::FolderToCopy sample;
  const int32_t result = fault.during([] { return CopyDirTree("dst", "src"); });
  EXPECT_EQ(result == 0, fs::is_directory("dst"));
  if (!fs::is_directory("dst")) {
    EXPECT_EQ(result, fault.error());
  }
  EXPECT_EQ(CopyDirTree("dst", "src"), 0);
}

void tell_status(CallFault &fault) {
  ZfxFileStatus status;
  const int32_t result = fault.during([&] { return ZfxStatFile(&status, "/tmp"); });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(status.flags == 0, fault.struck());
}

void make_name(CallFault &fault) {
  char name[32] = "before";
  const int32_t result = fault.during([&] { return ZfxGetTempFileName(name, sizeof name, "x"); });
  if (fault.struck("getrandom") && !fault.is_persistent()) {
    EXPECT_EQ(result, 0) << "names need to differ, not to be secret";
  }
  if (fault.struck("stat")) {
    EXPECT_EQ(result, fault.error());
  }
  EXPECT_EQ(result == 0, std::string(name).starts_with("/tmp/x"));
  EXPECT_EQ(result != 0, std::string(name) == "before");
}

void open_temporary(CallFault &fault) {
  errno = 0;
  EXPECT_EQ(fault.during([] { return ZfxGetTempFile("x"); }), -1);
  EXPECT_NE(errno, 0);
  if (fault.struck("open") || fault.struck("stat")) {
    EXPECT_EQ(errno, fault.error());
  }
}

void make_absolute(CallFault &fault) {
  char path[2048] = "before";
  const int32_t length = fault.during([&] { return ZfxRelativeDirToAbsolute(path, "x"); });
  EXPECT_EQ(length < 0, fault.struck());
  EXPECT_EQ(path[0] == '\0', fault.struck());
  if (fault.struck()) {
    EXPECT_EQ(errno, fault.error());
  }
}

void tell_folder(CallFault &fault) {
  char path[4096];
  std::memset(path, 'x', sizeof path);
  EXPECT_EQ(fault.during([&] { return GetExecutablePath(path, sizeof path); }), path);
  if (!fault.struck()) {
    EXPECT_STREQ(path, ZORVCRT_BINARY_DIR "/bin");
  } else {
    const std::string expected = fault.is_persistent() ? "" : fs::current_path().string();
    EXPECT_EQ(path, expected) << "the current directory is all that is known then";
  }
}

void tell_host(CallFault &fault) {
  char name[256] = "before";
  int32_t size = sizeof name;
  const int32_t length = fault.during([&] { return ZfxGetComputerName(name, &size); });
  EXPECT_EQ(length, size);
  EXPECT_EQ(length == 0, fault.struck());
  EXPECT_EQ(std::strlen(name), static_cast<std::size_t>(length));
}

void tell_user(CallFault &fault) {
  char user[64] = "before";
  const int32_t result =
      fault.during([&] { return ZfxGetOSUser(user, sizeof user, nullptr, 0, nullptr, 0); });
  EXPECT_EQ(result, fault.struck() ? -1 : 0);
  EXPECT_EQ(user[0] == '\0', fault.struck());
}

// The number in the message tells which step it was.
void list_groups(CallFault &fault) {
  char **list = nullptr;
  int32_t count = -1;
  char message[200] = "";
  const int32_t result =
      fault.during([&] { return ZfxGetUserGroups(&list, &count, message, sizeof message); });
  const std::string text = message;
  if (fault.struck("getpwuid_r")) {
    EXPECT_EQ(text, "ZfxGetUserGroups line 42: Error " + std::to_string(fault.error()) + " in getpwuid(): ");
  } else if (fault.struck("getgrouplist")) {
    EXPECT_TRUE(text.starts_with("ZfxGetUserGroups line 65: ") ||
                text.starts_with("ZfxGetUserGroups line 83: "))
        << text;
  } else if (fault.struck("getgrgid_r")) {
    EXPECT_TRUE(text.starts_with("ZfxGetUserGroups line 113: ")) << text;
    EXPECT_EQ(result, 0) << "a group without a name is left out";
  } else {
    EXPECT_EQ(text, "");
  }
  EXPECT_EQ(result == 0, list != nullptr);
  EXPECT_EQ(list == nullptr ? count : 0, 0);
  ZfxFreeUserGroups(list);
}

void create_thread(CallFault &fault) {
  ZfxThread *thread = fault.during([] { return ZfxCreateThread(faults::return_at_once, 1); });
  EXPECT_EQ(thread == nullptr, fault.struck());
  ZfxTerminateThread(thread);
}

void create_key(CallFault &fault) {
  uint32_t key = 7777;
  const int32_t result = fault.during([&] { return ZfxCreateTLS(&key, nullptr); });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(key == 7777, fault.struck());
  if (result == 0) {
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  }
}

void store_value(CallFault &fault) {
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, [](void *) {}), 0);
  const int32_t result = fault.during([&] { return ZfxSetTLSValue(key, &key); });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(ZfxGetTLSValue(key), fault.struck() ? nullptr : &key);
  EXPECT_EQ(ZfxSetTLSValue(key, nullptr), 0);
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

void load_library(CallFault &fault) {
  DynLib *library = nullptr;
  const int32_t result = fault.during([&] { return LoadDynLib(nullptr, &library); });
  EXPECT_EQ(result, fault.struck() ? DYNLIB_NOT_LOADED : 0);
  EXPECT_EQ(library == nullptr, fault.struck());
  UnloadDynLib(library);
}

template <auto kRead>
void read_line(CallFault &fault) {
  const standard_input::Input input("line\nmore\n");
  char area[64] = "before";
  const char *line = fault.during([&] { return kRead(area); });
  if (!fault.struck()) {
    EXPECT_EQ(line, area);
    EXPECT_STREQ(area, "line");
  } else if (line == nullptr) {
    EXPECT_STREQ(area, "");
  } else {
    EXPECT_TRUE(std::string("line").starts_with(area)) << area;
  }
  std::clearerr(stdin);
  EXPECT_EQ(kRead(area), area) << "the stream is read on";
}

constexpr SystemCall kCalls[] = {
    {"CopyDirTree", "OneLevel", copy_tree},
    {"CreatePath", "TwoLevels", create_path},
    {"GetExecutablePath", "Link", tell_folder},
    {"GetFileLine", "First", read_line<[](char *area) { return GetFileLine(area, 64, stdin); }>},
    {"LoadDynLib", "Program", load_library},
    {"ZfxAccept", "Waiting", accept_connection},
    {"ZfxAcceptEx", "Waiting", accept_extended},
    {"ZfxCloseSocket", "Open", close_socket},
    {"ZfxCloseSocketEx", "Open", close_socket_and_block},
    {"ZfxCreateClientSocket", "ByAddress", connect_to_host},
    {"ZfxCreateDynamicListenSocket", "AnyPort", listen_on_any_port},
    {"ZfxCreateListenSocket", "OnePort", listen_on_port},
    {"ZfxCreateSocket", "Stream", create_socket},
    {"ZfxCreateTLS", "New", create_key},
    {"ZfxCreateThread", "New", create_thread},
    {"ZfxExec", "AndWait", execute_without_id},
    {"ZfxExecImpl", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecImpl(kExitWithThree, 1, process, 0, -1, -1, -1); }>},
    {"ZfxExecP", "AndWait", execute<[](uint32_t *process) { return ZfxExecP(kExitWithThree, 1, process); }>},
    {"ZfxExecPR", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecPR(kExitWithThree, 1, -1, -1, -1, process); }>},
    {"ZfxExecWP", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecWP(kExitWithThree, 1, 0, process); }>},
    {"ZfxGetComputerName", "Host", tell_host},
    {"ZfxGetOSUser", "Known", tell_user},
    {"ZfxGetTempFile", "Absent", open_temporary},
    {"ZfxGetTempFileName", "New", make_name},
    {"ZfxGetUserGroups", "WithAMessage", list_groups},
    {"ZfxKillProcess", "Child", kill_child<ZfxKillProcess>},
    {"ZfxKillProcessTree", "Child", kill_child<ZfxKillProcessTree>},
    {"ZfxRedirToChildProcess", "Child", redirect_to_child},
    {"ZfxRelativeDirToAbsolute", "Relative", make_absolute},
    {"ZfxSetTLSValue", "LowKey", store_value},
    {"ZfxSocketPrintf", "Text", move_bytes<[](int socket) { return ZfxSocketPrintf(socket, "%s", "text"); }>},
    {"ZfxSocketRead", "Bytes", move_bytes<[](int socket) {
       char area[8] = "";
       return ZfxSocketRead(socket, area, sizeof area);
     }>},
    {"ZfxSocketReadSelect", "Ready", wait_until_ready<ZfxSocketReadSelect>},
    {"ZfxSocketWrite", "Bytes", move_bytes<[](int socket) { return ZfxSocketWrite(socket, "text", 4); }>},
    {"ZfxSocketWriteSelect", "Ready", wait_until_ready<ZfxSocketWriteSelect>},
    {"ZfxStatFile", "Folder", tell_status},
    {"ZfxWaitProcess", "Child", wait_for_child},
    {"gets_legacy", "First", read_line<gets_legacy>},
    {"safe_gets", "First", read_line<[](char *area) { return safe_gets(area, 64, 1); }>},
};

struct OsRefused : faults::FilesOnlyTest, ::testing::WithParamInterface<SystemCall> {};

TEST_P(OsRefused, KeepsItsContractWhicheverSystemCallFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, OsRefused, ::testing::ValuesIn(kCalls), faults::RowName());

}  // namespace
