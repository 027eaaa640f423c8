// The system's services without memory.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "../os/standard_input.hpp"
#include "CopyDirTree.h"
#include "CreatePath.h"
#include "FileStatus.h"
#include "GetComputerName.h"
#include "GetExecutablePath.h"
#include "GetFileLine.h"
#include "GetTempDir.h"
#include "RelativeDirToAbsolute.h"
#include "allocation_walk.hpp"
#include "dynlib.h"
#include "event.h"
#include "exec.h"
#include "files.hpp"
#include "files_only_test.hpp"
#include "gets_legacy.h"
#include "kill.h"
#include "mutex.h"
#include "os_samples.hpp"
#include "osuser_unix.h"
#include "procwait.h"
#include "safe_gets.h"
#include "security.h"
#include "setpname.h"
#include "sockredir.h"
#include "tcpsock.h"
#include "thread.h"
#include "tls.h"
#include "usergroups_unix.h"
#include "zfxsemaphore.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::kExitWithThree;
using faults::LocalListener;
using faults::make;
using faults::Owner;
using faults::QuietCall;

void create_thread(Fault &fault) {
  ZfxThread *thread = fault.during([] { return ZfxCreateThread(faults::return_at_once, 1); });
  if (!fault.struck()) {
    EXPECT_NE(thread, nullptr);
  }
  ZfxTerminateThread(thread);
}

// A key so high that the C library has no place for its value in a thread's own record.
void store_value(Fault &fault) {
  uint32_t keys[40] = {};
  for (uint32_t &key : keys) {
    EXPECT_EQ(ZfxCreateTLS(&key, [](void *) {}), 0);
  }
  std::thread([&] {
    const int32_t result = fault.during([&] { return ZfxSetTLSValue(keys[39], &keys); });
    EXPECT_EQ(result, fault.struck() ? ENOMEM : 0);
    EXPECT_EQ(ZfxGetTLSValue(keys[39]), fault.struck() ? nullptr : &keys);
    EXPECT_EQ(ZfxSetTLSValue(keys[39], &keys), 0);
    EXPECT_EQ(ZfxGetTLSValue(keys[39]), &keys);
  }).join();
  for (const uint32_t key : keys) {
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  }
}

void tell_user(Fault &fault) {
  char user[64] = "";
  char message[64] = "before";
  const auto tell = [&] { return ZfxGetOSUser(user, sizeof user, nullptr, 0, message, sizeof message); };
  const int32_t result = fault.during(tell);
  EXPECT_EQ(result == 0, user[0] != '\0');
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_STREQ(message, "before");
  EXPECT_EQ(tell(), 0);
}

// The result, the list and the message after each failure as the header has them.
void list_groups(Fault &fault) {
  char **list = nullptr;
  int32_t count = -1;
  char message[200] = "";
  const int32_t result =
      fault.during([&] { return ZfxGetUserGroups(&list, &count, message, sizeof message); });
  const Owner<char *, ZfxFreeUserGroups> owner(list);
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_EQ(result == 0, list != nullptr);
  if (result != 0) {
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(std::string(message).starts_with("ZfxGetUserGroups line ")) << message;
  } else {
    EXPECT_EQ(list[count], nullptr) << "as many names as are counted";
  }
  const Owner<char *, ZfxFreeUserGroups> again([] {
    char **whole = nullptr;
    EXPECT_EQ(ZfxGetUserGroups(&whole, nullptr, nullptr, 0), 0);
    return whole;
  }());
  EXPECT_NE(again, nullptr);
}

void list_groups_without_message(Fault &fault) {
  char **list = nullptr;
  int32_t count = -1;
  const int32_t result = fault.during([&] { return ZfxGetUserGroups(&list, &count, nullptr, 0); });
  const Owner<char *, ZfxFreeUserGroups> owner(list);
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_EQ(list == nullptr ? count : 0, 0);
}

void connect_to_host(Fault &fault) {
  const LocalListener listener;
  const int before = support::open_descriptors();
  int32_t socket = -7;
  const auto connect = [&] { return ZfxCreateClientSocket("127.0.0.1", listener.port, &socket); };
  const int32_t result = fault.during(connect);
  EXPECT_EQ(result, fault.struck() ? ENOMEM : 0);
  EXPECT_EQ(socket == -7, fault.struck());
  EXPECT_EQ(support::open_descriptors() - before, fault.struck() ? 0 : 1);
  if (fault.struck()) {
    EXPECT_EQ(connect(), 0);
  }
  ::close(socket);
}

// A descriptor that no set of the usual size has room for.
template <auto kWait, int kEnd>
void wait_for_high_descriptor(Fault &fault) {
  rlimit limit = {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < 2000) {
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 2000);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  }
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe(ends), 0);
  EXPECT_EQ(::write(ends[1], "x", 1), 1);
  const int high = ::fcntl(ends[kEnd], F_DUPFD, 1500);
  timeval timeout = {0, 0};
  int32_t error = -7;
  const int32_t result = fault.during([&] { return kWait(high, &timeout, &error); });
  EXPECT_EQ(result, fault.struck() ? -1 : 1);
  EXPECT_EQ(error, fault.struck() ? ENOMEM : 0);
  EXPECT_EQ(kWait(high, &timeout, &error), 1);
  for (const int descriptor : {ends[0], ends[1], high}) {
    ::close(descriptor);
  }
}

template <auto kExecute>
void execute(Fault &fault) {
  uint32_t process = 0;
  const int32_t result = fault.during([&] { return kExecute(&process); });
  EXPECT_EQ(result, fault.struck() ? ENOMEM : 3 * 256);
  EXPECT_EQ(process == UINT32_MAX, fault.struck());
  EXPECT_EQ(kExecute(&process), 3 * 256);
}

constexpr char kSample[] = ZORVCRT_BINARY_DIR "/tests/dynlib_sample.so";

// The loader keeps the text of its error for the thread until it is asked for.
void take_pending_error() {
  char area[300];
  GetDynLoadError(area, sizeof area);
  GetDynLoadError(area, sizeof area);
  EXPECT_STREQ(area, "Unknown error.");
}

void load_library(Fault &fault) {
  DynLib *library = nullptr;
  const int32_t result = fault.during([&] { return LoadDynLib(kSample, &library); });
  EXPECT_TRUE(result == 0 || (fault.struck() && result == DYNLIB_NOT_LOADED)) << result;
  EXPECT_EQ(result == 0, library != nullptr);
  take_pending_error();
  if (library == nullptr) {
    EXPECT_EQ(LoadDynLib(kSample, &library), 0);
  }
  void *address = nullptr;
  EXPECT_EQ(LoadProc(library, 0, "sample_answer", &address), 0);
  ::dlclose(library->handle);  // so that the next one loads it anew
  UnloadDynLib(library);
}

void look_up_absent_symbol(Fault &fault) {
  DynLib *library = nullptr;
  ASSERT_EQ(LoadDynLib(nullptr, &library), 0);
  void *address = &library;
  const int32_t result = fault.during([&] { return LoadProc(library, 0, "no_such_symbol", &address); });
  EXPECT_EQ(result, DYNLIB_NO_SYMBOL);
  EXPECT_EQ(address, nullptr);
  take_pending_error();
  UnloadDynLib(library);
}

template <auto kTell>
void tell_loader_error(Fault &fault) {
  EXPECT_EQ(::dlopen("/no/such/library.so", RTLD_NOW), nullptr);
  const std::string text = fault.during([] { return kTell(); });
  EXPECT_FALSE(text.empty());
  if (!fault.struck()) {
    EXPECT_NE(text.find("/no/such/library.so"), std::string::npos) << text;
  }
  take_pending_error();
}

void copy_tree(Fault &fault) {
  const faults::FolderToCopy sample;
  const auto copy = [] { return CopyDirTree("dst", "src"); };
  EXPECT_EQ(fault.during(copy), 0);
  EXPECT_TRUE(std::filesystem::is_directory("dst"));
  EXPECT_EQ(copy(), 0);
}

// The stream has no buffer yet.
template <auto kRead>
void read_line(Fault &fault) {
  const standard_input::Input input("line\nmore\n");
  char line[64] = "";
  EXPECT_EQ(fault.during([&] { return kRead(line); }), line)
      << "a stream without a buffer is slow, not empty";
  EXPECT_STREQ(line, "line");
  EXPECT_EQ(kRead(line), line);
  EXPECT_STREQ(line, "more");
}

char area[4096];

constexpr FaultedCall kFaulted[] = {
    {"CopyDirTree", "OneLevel", copy_tree},
    {"GetDLError", "Pending", tell_loader_error<GetDLError>},
    {"GetDynLoadError", "Pending", tell_loader_error<[] { return GetDynLoadError(area, sizeof area); }>},
    {"GetDynLoadErrorV", "Pending", tell_loader_error<[] { return GetDynLoadErrorV(area, sizeof area); }>},
    {"GetFileLine", "First", read_line<[](char *line) { return GetFileLine(line, 64, stdin); }>},
    {"LoadDynLib", "New", load_library},
    {"LoadProc", "AbsentSymbol", look_up_absent_symbol},
    {"ZfxCreateClientSocket", "ByAddress", connect_to_host},
    {"ZfxCreateEvent", "New",
     make<ZfxCreateEvent, ZfxCloseEvent,
          [](ZfxEvent *event) {
            EXPECT_EQ(ZfxSetEvent(event), 0);
            EXPECT_EQ(ZfxCheckEvent(event), 1);
          }>},
    {"ZfxCreateMutex", "New",
     make<ZfxCreateMutex, ZfxDestroyMutex,
          [](ZfxMutex *mutex) {
            EXPECT_EQ(ZfxLockMutex(mutex, 1), 1);
            ZfxUnlockMutex(mutex);
          }>},
    {"ZfxCreateSemaphore", "New",
     make<[] { return ZfxCreateSemaphore(1); }, ZfxDestroySemaphore,
          [](ZfxSemaphore *semaphore) { EXPECT_EQ(ZfxSemaphoreTryObtain(semaphore, 0), 1); }>},
    {"ZfxCreateThread", "New", create_thread},
    {"ZfxExec", "AndWait", execute<[](uint32_t *process) {
       const int32_t result = ZfxExec(kExitWithThree, 1);
       *process = result == ENOMEM ? UINT32_MAX : 0;
       return result;
     }>},
    {"ZfxExecImpl", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecImpl(kExitWithThree, 1, process, 0, -1, -1, -1); }>},
    {"ZfxExecP", "AndWait", execute<[](uint32_t *process) { return ZfxExecP(kExitWithThree, 1, process); }>},
    {"ZfxExecPR", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecPR(kExitWithThree, 1, -1, -1, -1, process); }>},
    {"ZfxExecWP", "AndWait",
     execute<[](uint32_t *process) { return ZfxExecWP(kExitWithThree, 1, 0, process); }>},
    {"ZfxGetOSUser", "Known", tell_user},
    {"ZfxGetUserGroups", "WithAMessage", list_groups},
    {"ZfxGetUserGroups", "WithoutAMessage", list_groups_without_message},
    {"ZfxSetTLSValue", "HighKey", store_value},
    {"ZfxSocketReadSelect", "HighDescriptor", wait_for_high_descriptor<ZfxSocketReadSelect, 0>},
    {"ZfxSocketWriteSelect", "HighDescriptor", wait_for_high_descriptor<ZfxSocketWriteSelect, 1>},
    {"gets_legacy", "First", read_line<gets_legacy>},
    {"safe_gets", "First", read_line<[](char *line) { return safe_gets(line, 64, 1); }>},
};

const QuietCall kQuiet[] = {
    {"CreatePath", [] { EXPECT_EQ(CreatePath("/tmp"), 0); }},
    {"GetExecutablePath", [] { GetExecutablePath(area, sizeof area); }},
    {"ReleaseDynLibHandle", [] { ReleaseDynLibHandle(nullptr); }},
    {"SetProcessName",
     [] {
       std::strcpy(area, "program");
       char *const arguments[] = {area, nullptr};
       SetProcessName("name", 1, arguments);
     }},
    {"UnloadDynLib", [] { UnloadDynLib(nullptr); }},
    {"ZfxAccept", [] { EXPECT_EQ(ZfxAccept(-1, nullptr, nullptr), -1); }},
    {"ZfxAcceptEx", [] { EXPECT_EQ(ZfxAcceptEx(-1, nullptr, nullptr, nullptr), -1); }},
    {"ZfxAddAccessRights", [] { ZfxAddAccessRights(nullptr); }},
    {"ZfxCheckEvent", [] { ZfxCheckEvent(nullptr); }},
    {"ZfxCloseEvent", [] { ZfxCloseEvent(nullptr); }},
    {"ZfxCloseSocket", [] { ZfxCloseSocket(ZfxCreateSocket(AF_INET, SOCK_STREAM)); }},
    {"ZfxCloseSocketEx", [] { ZfxCloseSocketEx(-1, nullptr); }},
    {"ZfxCreateDynamicListenSocket",
     [] {
       int32_t socket = -1;
       EXPECT_EQ(ZfxCreateDynamicListenSocket(&socket, nullptr), 0);
       ZfxCloseSocket(socket);
     }},
    {"ZfxCreateListenSocket",
     [] {
       int32_t socket = -1;
       EXPECT_EQ(ZfxCreateListenSocket(&socket, 0), 0);
       ZfxCloseSocket(socket);
     }},
    {"ZfxCreateSocket", [] { ZfxCloseSocket(ZfxCreateSocket(AF_INET, SOCK_STREAM)); }},
    {"ZfxCreateTLS",
     [] {
       uint32_t key = 0;
       EXPECT_EQ(ZfxCreateTLS(&key, nullptr), 0);
       ZfxDeleteTLS(key);
     }},
    {"ZfxDeleteTLS", [] { ZfxDeleteTLS(1000); }},
    {"ZfxDestroyMutex", [] { ZfxDestroyMutex(nullptr); }},
    {"ZfxDestroySemaphore", [] { ZfxDestroySemaphore(nullptr); }},
    {"ZfxFreeUserGroups", [] { ZfxFreeUserGroups(nullptr); }},
    {"ZfxGetComputerName",
     [] {
       int32_t size = sizeof area;
       ZfxGetComputerName(area, &size);
     }},
    {"ZfxGetCurrentThreadId", [] { ZfxGetCurrentThreadId(); }},
    {"ZfxGetTLSValue", [] { ZfxGetTLSValue(1000); }},
    {"ZfxGetTempDir", [] { ZfxGetTempDir(area, sizeof area); }},
    {"ZfxGetTempFile", [] { EXPECT_EQ(ZfxGetTempFile("x"), -1); }},
    {"ZfxGetTempFileName", [] { EXPECT_EQ(ZfxGetTempFileName(area, sizeof area, "x"), 0); }},
    {"ZfxGetThreadConcurrency", [] { ZfxGetThreadConcurrency(); }},
    {"ZfxGlobalTLSDestructor", [] { ZfxGlobalTLSDestructor(nullptr); }},
    {"ZfxIsThreadFinished", [] { ZfxIsThreadFinished(nullptr); }},
    {"ZfxKillProcess", [] { EXPECT_EQ(ZfxKillProcess(0), ESRCH); }},
    {"ZfxKillProcessTree", [] { EXPECT_EQ(ZfxKillProcessTree(0), ESRCH); }},
    {"ZfxLockMutex", [] { ZfxLockMutex(nullptr, 0); }},
    {"ZfxObtainSocket", [] { ZfxObtainSocket(0, 0, nullptr, nullptr); }},
    {"ZfxRedirToChildProcess",
     [] {
       uint32_t process = 0;
       char *const arguments[] = {area, nullptr};
       EXPECT_EQ(ZfxRedirToChildProcess(0, 0, "/bin/true", 1, arguments, nullptr, 0, 0, 0, &process), 0);
       EXPECT_EQ(ZfxWaitProcess(process, -1, nullptr), 1);
     }},
    {"ZfxRelativeDirToAbsolute", [] { EXPECT_GT(ZfxRelativeDirToAbsolute(area, "x"), 0); }},
    {"ZfxResetEvent", [] { ZfxResetEvent(nullptr); }},
    {"ZfxSemaphoreObtain", [] { ZfxSemaphoreObtain(nullptr); }},
    {"ZfxSemaphoreRelease", [] { ZfxSemaphoreRelease(nullptr); }},
    {"ZfxSemaphoreTryObtain", [] { ZfxSemaphoreTryObtain(nullptr, 1); }},
    {"ZfxSetEvent", [] { ZfxSetEvent(nullptr); }},
    {"ZfxSetTLSValue", [] { ZfxSetTLSValue(1000, nullptr); }},
    {"ZfxSetThreadConcurrency", [] { ZfxSetThreadConcurrency(0); }},
    {"ZfxSocketPrintf", [] { EXPECT_EQ(ZfxSocketPrintf(-1, "%d %s", 1, "text"), -1); }},
    {"ZfxSocketRead", [] { EXPECT_EQ(ZfxSocketRead(-1, area, 1), -1); }},
    {"ZfxSocketReadSelect",
     [] {
       timeval timeout = {0, 0};
       ZfxSocketReadSelect(0, &timeout, nullptr);
     }},
    {"ZfxSocketWrite", [] { EXPECT_EQ(ZfxSocketWrite(-1, area, 1), -1); }},
    {"ZfxSocketWriteSelect",
     [] {
       timeval timeout = {0, 0};
       ZfxSocketWriteSelect(1, &timeout, nullptr);
     }},
    {"ZfxStartNetwork", [] { ZfxStartNetwork(); }},
    {"ZfxStatFile",
     [] {
       ZfxFileStatus status;
       EXPECT_EQ(ZfxStatFile(&status, "/tmp"), 0);
     }},
    {"ZfxStopNetwork", [] { ZfxStopNetwork(); }},
    {"ZfxTerminateThread", [] { ZfxTerminateThread(nullptr); }},
    {"ZfxThreadCleanup", [] { ZfxThreadCleanup(nullptr); }},
    {"ZfxUnlockMutex", [] { ZfxUnlockMutex(nullptr); }},
    {"ZfxWaitEvent", [] { ZfxWaitEvent(nullptr, 0); }},
    {"ZfxWaitProcess", [] { EXPECT_EQ(ZfxWaitProcess(0x7FFFFFF0, 0, nullptr), -1); }},
};

struct OsWithoutMemory : faults::FilesOnlyTest, ::testing::WithParamInterface<FaultedCall> {};

TEST_P(OsWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, OsWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct OsFrugal : ::testing::TestWithParam<QuietCall> {};

TEST_P(OsFrugal, TakesNoMemory) {
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, OsFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(OsMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("os"));
}

TEST(MemoryFaults, CoverEveryRoom) {
  std::set<std::string> rooms;
  for (const auto &[room, names] : faults::exported_names()) {
    EXPECT_FALSE(names.empty()) << room;
    rooms.insert(room);
  }
  EXPECT_EQ(rooms, (std::set<std::string>{"foundation", "os", "conv", "config", "json", "log", "time"}));
}

}  // namespace
