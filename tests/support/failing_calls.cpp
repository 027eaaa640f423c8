#include "failing_calls.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <netdb.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include "next_function.hpp"

namespace support {

namespace {

struct Watched {
  std::string_view function;
  std::array<int, 6> ways;  // up to the first 0; the first one is for good
};

constexpr Watched kWatched[] = {
    {"accept4", {EMFILE, EINTR, ECONNABORTED, EAGAIN}},
    {"bind", {EADDRINUSE, EACCES}},
    {"chdir", {EACCES, EIO}},
    {"close", {EIO, EINTR}},
    {"closedir", {EIO}},
    {"connect", {ECONNREFUSED, ETIMEDOUT, EINTR, ENETUNREACH}},
    {"dlopen", {ENOMEM}},
    {"dup2", {EMFILE, EINTR}},
    {"execv", {ENOENT, EACCES, ENOMEM, E2BIG}},
    {"execvp", {ENOENT, EACCES, ENOMEM, E2BIG}},
    {"faccessat", {EACCES, EIO}},
    {"fchdir", {EACCES, EIO}},
    {"fclose", {EIO, ENOSPC}},
    {"fcntl", {EBADF}},
    {"fdopen", {ENOMEM}},
    {"fflush_unlocked", {ENOSPC, EIO}},
    {"fgetc", {EIO, EINTR}},
    {"fgets", {EIO, EINTR}},
    {"fgets_unlocked", {EIO, EINTR}},
    {"fopen", {EMFILE, EACCES, EINTR, ENFILE, EIO}},
    {"fork", {EAGAIN, ENOMEM}},
    {"fread", {EIO, EISDIR, EINTR}},
    {"fstat", {EIO, EOVERFLOW}},
    {"getcwd", {ENOENT, ERANGE, EACCES}},
    {"getgrgid_r", {EIO, EMFILE}},
    {"getgrnam", {EIO}},
    {"getgrouplist", {EIO}},
    {"getgroups", {EINVAL}},
    {"gethostbyaddr_r", {EIO}},
    {"gethostbyname_r", {EAGAIN, EMFILE}},
    {"gethostname", {ENAMETOOLONG}},
    {"getpwuid", {EIO}},
    {"getpwuid_r", {EIO, EMFILE}},
    {"getrandom", {EAGAIN, EINTR, ENOSYS, kShort}},
    {"getsockname", {ENOBUFS}},
    {"kill", {EPERM, ESRCH}},
    {"listen", {EADDRINUSE}},
    {"localtime_r", {EOVERFLOW}},
    {"lstat", {EACCES, EIO, ELOOP}},
    {"mkdir", {EACCES, ENOSPC, EROFS}},
    {"mktime", {EOVERFLOW}},
    {"mmap", {ENOMEM}},
    {"mremap", {ENOMEM}},
    {"open", {EMFILE, EACCES, EINTR, ENFILE, EIO}},
    {"openat", {EMFILE, EACCES, EINTR}},
    {"opendir", {EMFILE, EACCES}},
    {"pipe2", {EMFILE, ENFILE}},
    {"process_vm_writev", {EPERM, EFAULT, ENOSYS}},
    {"pthread_attr_init", {ENOMEM}},
    {"pthread_create", {EAGAIN, EPERM}},
    {"pthread_key_create", {EAGAIN, ENOMEM}},
    {"pthread_setspecific", {ENOMEM}},
    {"read", {EIO, EINTR, EAGAIN, ECONNRESET, kShort}},
    {"readdir", {EIO}},
    {"readlink", {EACCES, EIO, ENOENT}},
    {"realpath", {EACCES, ENOENT}},
    {"select", {ENOMEM, EINTR}},
    {"setenv", {ENOMEM}},
    {"setsockopt", {ENOPROTOOPT, ENOMEM}},
    {"socket", {EMFILE, EACCES, ENOBUFS}},
    {"stat", {EACCES, ENOENT, ELOOP, EIO}},
    {"waitpid", {ECHILD, EINTR}},
    {"write", {ENOSPC, EIO, EPIPE, EINTR, EAGAIN, kShort}},
};

struct Order {
  std::size_t count = 0;  // calls seen
  std::size_t first = 0;  // number of the call that fails, 0 for none
  std::size_t way = 0;
  bool persistent = false;
  CallsOf whose = CallsOf::kThread;
  pid_t process = 0;
  const Watched *struck = nullptr;
  int error = 0;
};

thread_local Order of_thread;
thread_local Order *current = &of_thread;
thread_local BeforeCall *before_call = nullptr;

const Watched *find_watched(std::string_view function) {
  const auto *found = std::find_if(std::begin(kWatched), std::end(kWatched),
                                   [function](const Watched &row) { return row.function == function; });
  return found == std::end(kWatched) ? nullptr : found;
}

// How this call of the function fails, 0 for not at all.
int failure_of(const char *function) {
  if (before_call != nullptr) before_call->notice(function);
  Order &order = *current;
  const bool is_child = order.process != ::getpid();
  if (order.first == 0 || is_child != (order.whose == CallsOf::kChild)) return 0;
  ++order.count;
  if (order.count < order.first || (order.count > order.first && !order.persistent)) return 0;
  const Watched *watched = find_watched(function);
  if (watched == nullptr) return 0;
  const int error = watched->ways[order.struck == nullptr ? order.way : 0];
  if (order.struck == nullptr) {
    order.struck = watched;
    order.error = error;
  }
  return error;
}

template <class Result, class... Arguments>
Result pass_on(const char *function, Arguments... arguments) {
  return next_function<Result (*)(Arguments...)>(function)(arguments...);
}

// For functions that give a result of their own and set errno.
template <class Result, class... Arguments>
Result call(const char *function, Result failure, Arguments... arguments) {
  if (const int error = failure_of(function); error != 0) {
    errno = error;
    return failure;
  }
  return pass_on<Result>(function, arguments...);
}

// For functions whose result is the error number.
template <class... Arguments>
int call_for_number(const char *function, Arguments... arguments) {
  if (const int error = failure_of(function); error != 0) return error;
  return pass_on<int>(function, arguments...);
}

// For functions that move bytes.
template <class Bytes, class... Rest>
ssize_t call_for_bytes(const char *function, int handle, Bytes bytes, std::size_t size, Rest... rest) {
  const int error = failure_of(function);
  if (error == kShort) size = std::min<std::size_t>(size, 1);
  if (error > 0) {
    errno = error;
    return -1;
  }
  return pass_on<ssize_t>(function, handle, bytes, size, rest...);
}

// For functions that give a resource back: it is gone also when they fail.
template <class Result, class Resource>
Result call_to_close(const char *function, Result failure, Resource resource) {
  const int error = failure_of(function);
  const Result result = pass_on<Result>(function, resource);
  if (error == 0) return result;
  errno = error;
  return failure;
}

// For functions that read a stream, which keeps a mark of the error.
template <class Result, class... Arguments>
Result call_on_stream(const char *function, FILE *stream, Result failure, Arguments... arguments) {
  if (const int error = failure_of(function); error != 0) {
    stream->_flags |= _IO_ERR_SEEN;
    errno = error;
    return failure;
  }
  return pass_on<Result>(function, arguments...);
}

// An order that a child shares with its parent, which learns from it what has failed.
Order *of_child() {
  static void *const page = pass_on<void *>("mmap", static_cast<void *>(nullptr), sizeof(Order),
                                            PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, off_t{0});
  if (page == MAP_FAILED) std::abort();
  return static_cast<Order *>(page);
}

}  // namespace

FailingCalls::FailingCalls(std::size_t first, std::size_t way, bool persistent, CallsOf whose) {
  current = whose == CallsOf::kChild ? of_child() : &of_thread;
  *current = {0, first, way, persistent, whose, ::getpid(), nullptr, 0};
}

bool FailingCalls::stop() {
  Order &order = *current;
  if (order.first != 0 && order.struck != nullptr) {
    function_ = order.struck->function;
    error_ = order.error;
    const auto &all = order.struck->ways;
    ways_ = static_cast<std::size_t>(std::find(all.begin(), all.end(), 0) - all.begin());
  }
  order.first = 0;
  return !function_.empty();
}

BeforeCall::BeforeCall(std::string_view function, std::size_t count, std::function<void()> action)
    : function_(function), count_(count), action_(std::move(action)) {
  before_call = this;
}

BeforeCall::~BeforeCall() {
  before_call = nullptr;
}

void BeforeCall::notice(std::string_view function) {
  if (function != function_ || count_ == 0) return;
  if (--count_ == 0) action_();
}

bool is_watched(std::string_view function) {
  return find_watched(function) != nullptr;
}

}  // namespace support

using support::call;
using support::call_for_bytes;
using support::call_for_number;
using support::call_on_stream;
using support::call_to_close;

extern "C" {

int accept4(int socket, sockaddr *address, socklen_t *length, int flags) {
  return call("accept4", -1, socket, address, length, flags);
}

int bind(int socket, const sockaddr *address, socklen_t length) noexcept {
  return call("bind", -1, socket, address, length);
}

int chdir(const char *path) noexcept {
  return call("chdir", -1, path);
}

int close(int descriptor) {
  return call_to_close("close", -1, descriptor);
}

int closedir(DIR *directory) {
  return call_to_close("closedir", -1, directory);
}

int connect(int socket, const sockaddr *address, socklen_t length) {
  return call("connect", -1, socket, address, length);
}

void *dlopen(const char *path, int mode) noexcept {
  return call("dlopen", static_cast<void *>(nullptr), path, mode);
}

int dup2(int from, int to) noexcept {
  return call("dup2", -1, from, to);
}

int execv(const char *path, char *const arguments[]) noexcept {
  return call("execv", -1, path, arguments);
}

int execvp(const char *file, char *const arguments[]) noexcept {
  return call("execvp", -1, file, arguments);
}

int faccessat(int folder, const char *path, int mode, int flags) noexcept {
  return call("faccessat", -1, folder, path, mode, flags);
}

int fchdir(int descriptor) noexcept {
  return call("fchdir", -1, descriptor);
}

int fclose(FILE *stream) {
  return call_to_close("fclose", EOF, stream);
}

int fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  return call("fcntl", -1, descriptor, command, argument);
}

FILE *fdopen(int descriptor, const char *mode) noexcept {
  return call("fdopen", static_cast<FILE *>(nullptr), descriptor, mode);
}

int fflush_unlocked(FILE *stream) {
  return call("fflush_unlocked", EOF, stream);
}

int fgetc(FILE *stream) {
  return call_on_stream("fgetc", stream, EOF, stream);
}

char *fgets(char *area, int size, FILE *stream) {
  return call_on_stream("fgets", stream, static_cast<char *>(nullptr), area, size, stream);
}

char *fgets_unlocked(char *area, int size, FILE *stream) {
  return call_on_stream("fgets_unlocked", stream, static_cast<char *>(nullptr), area, size, stream);
}

FILE *fopen(const char *path, const char *mode) {
  return call("fopen", static_cast<FILE *>(nullptr), path, mode);
}

pid_t fork() noexcept {
  return call("fork", pid_t{-1});
}

std::size_t fread(void *area, std::size_t size, std::size_t count, FILE *stream) {
  return call_on_stream("fread", stream, std::size_t{0}, area, size, count, stream);
}

int fstat(int descriptor, struct stat *status) noexcept {
  return call("fstat", -1, descriptor, status);
}

char *getcwd(char *area, std::size_t size) noexcept {
  return call("getcwd", static_cast<char *>(nullptr), area, size);
}

int getgrgid_r(gid_t id, group *entry, char *area, std::size_t size, group **found) {
  *found = nullptr;
  return call_for_number("getgrgid_r", id, entry, area, size, found);
}

group *getgrnam(const char *name) {
  return call("getgrnam", static_cast<group *>(nullptr), name);
}

int getgrouplist(const char *user, gid_t primary, gid_t *groups, int *count) {
  return call("getgrouplist", -1, user, primary, groups, count);
}

int getgroups(int size, gid_t *groups) noexcept {
  return call("getgroups", -1, size, groups);
}

int gethostbyaddr_r(const void *address, socklen_t length, int type, hostent *entry, char *area,
                    std::size_t size, hostent **found, int *error) {
  *found = nullptr;
  return call_for_number("gethostbyaddr_r", address, length, type, entry, area, size, found, error);
}

int gethostbyname_r(const char *name, hostent *entry, char *area, std::size_t size, hostent **found,
                    int *error) {
  *found = nullptr;
  return call_for_number("gethostbyname_r", name, entry, area, size, found, error);
}

int gethostname(char *area, std::size_t size) noexcept {
  return call("gethostname", -1, area, size);
}

passwd *getpwuid(uid_t id) {
  return call("getpwuid", static_cast<passwd *>(nullptr), id);
}

int getpwuid_r(uid_t id, passwd *entry, char *area, std::size_t size, passwd **found) {
  *found = nullptr;
  return call_for_number("getpwuid_r", id, entry, area, size, found);
}

ssize_t getrandom(void *area, std::size_t size, unsigned flags) {
  const int error = support::failure_of("getrandom");
  if (error == support::kShort) return support::pass_on<ssize_t>("getrandom", area, std::size_t{1}, flags);
  if (error == 0) return support::pass_on<ssize_t>("getrandom", area, size, flags);
  errno = error;
  return -1;
}

int getsockname(int socket, sockaddr *address, socklen_t *length) noexcept {
  return call("getsockname", -1, socket, address, length);
}

int kill(pid_t process, int signal) noexcept {
  return call("kill", -1, process, signal);
}

int listen(int socket, int backlog) noexcept {
  return call("listen", -1, socket, backlog);
}

tm *localtime_r(const time_t *time, tm *record) noexcept {
  return call("localtime_r", static_cast<tm *>(nullptr), time, record);
}

int lstat(const char *path, struct stat *status) noexcept {
  return call("lstat", -1, path, status);
}

int mkdir(const char *path, mode_t mode) noexcept {
  return call("mkdir", -1, path, mode);
}

time_t mktime(tm *record) noexcept {
  return call("mktime", time_t{-1}, record);
}

void *mmap(void *address, std::size_t size, int protection, int flags, int descriptor,
           off_t offset) noexcept {
  return call("mmap", MAP_FAILED, address, size, protection, flags, descriptor, offset);
}

// No caller in the library gives the place that a fixed move would need.
void *mremap(void *address, std::size_t size, std::size_t new_size, int flags, ...) noexcept {
  return call("mremap", MAP_FAILED, address, size, new_size, flags);
}

int open(const char *path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  return call("open", -1, path, flags, mode);
}

int openat(int folder, const char *path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  return call("openat", -1, folder, path, flags, mode);
}

DIR *opendir(const char *path) {
  return call("opendir", static_cast<DIR *>(nullptr), path);
}

int pipe2(int *ends, int flags) noexcept {
  return call("pipe2", -1, ends, flags);
}

ssize_t process_vm_writev(pid_t process, const iovec *local, unsigned long local_count, const iovec *remote,
                          unsigned long remote_count, unsigned long flags) noexcept {
  return call("process_vm_writev", ssize_t{-1}, process, local, local_count, remote, remote_count, flags);
}

int pthread_attr_init(pthread_attr_t *attributes) noexcept {
  return call_for_number("pthread_attr_init", attributes);
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *),
                   void *argument) noexcept {
  return call_for_number("pthread_create", thread, attributes, routine, argument);
}

int pthread_key_create(pthread_key_t *key, void (*destructor)(void *)) noexcept {
  return call_for_number("pthread_key_create", key, destructor);
}

int pthread_setspecific(pthread_key_t key, const void *value) noexcept {
  return call_for_number("pthread_setspecific", key, value);
}

ssize_t read(int descriptor, void *area, std::size_t size) {
  return call_for_bytes("read", descriptor, area, size);
}

dirent *readdir(DIR *directory) {
  return call("readdir", static_cast<dirent *>(nullptr), directory);
}

ssize_t readlink(const char *path, char *area, std::size_t size) noexcept {
  return call("readlink", ssize_t{-1}, path, area, size);
}

char *realpath(const char *path, char *area) noexcept {
  return call("realpath", static_cast<char *>(nullptr), path, area);
}

int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout) {
  return call("select", -1, count, readable, writable, exceptional, timeout);
}

int setenv(const char *name, const char *value, int overwrite) noexcept {
  return call("setenv", -1, name, value, overwrite);
}

int setsockopt(int socket, int level, int option, const void *value, socklen_t length) noexcept {
  return call("setsockopt", -1, socket, level, option, value, length);
}

int socket(int domain, int type, int protocol) noexcept {
  return call("socket", -1, domain, type, protocol);
}

int stat(const char *path, struct stat *status) noexcept {
  return call("stat", -1, path, status);
}

pid_t waitpid(pid_t process, int *status, int options) {
  return call("waitpid", pid_t{-1}, process, status, options);
}

ssize_t write(int descriptor, const void *bytes, std::size_t size) {
  return call_for_bytes("write", descriptor, bytes, size);
}

}  // extern "C"
