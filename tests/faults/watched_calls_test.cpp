// The proof that no system call escapes the walks: what the library needs of the C library either is watched
// or cannot fail in a way that anybody would notice.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "failing_calls.hpp"
#include "run.hpp"

namespace {

const std::set<std::string> kMemory = {"malloc", "calloc", "realloc", "free", "strdup", "malloc_usable_size"};

// Computations and look-ups in the process's own memory.
const std::set<std::string> kPure = {
    "asctime_r",   "clearerr",  "clock",       "clock_gettime", "dirfd",        "dlerror",
    "dlsym",       "environ",   "feof",        "ferror",        "fileno",       "fileno_unlocked",
    "getenv",      "getpid",    "getuid",      "isalnum",       "isspace",      "memchr",
    "memcmp",      "memcpy",    "memmove",     "memset",        "pthread_self", "sem_getvalue",
    "snprintf",    "sigaddset", "sigemptyset", "stderr",        "stdin",        "stdout",
    "strcasecmp",  "strchr",    "strcmp",      "strerror_r",    "strftime",     "strlen",
    "strncasecmp", "strncmp",   "strnlen",     "strrchr",       "strtol",       "time",
    "toupper",     "tzset",     "ungetc",      "vsnprintf",     "bcmp"};

// Nothing depends on whether these succeed, or they cannot fail for the arguments that they are given.
const std::set<std::string> kWithoutConsequence = {"flockfile",
                                                   "munmap",
                                                   "funlockfile",
                                                   "fputc",
                                                   "fprintf",
                                                   "fwrite",
                                                   "fwrite_unlocked",
                                                   "perror",
                                                   "printf",
                                                   "putchar",
                                                   "puts",
                                                   "nanosleep",
                                                   "usleep",
                                                   "exit",
                                                   "raise",
                                                   "rewind",
                                                   "sigaction",
                                                   "sigprocmask",
                                                   "sem_destroy",
                                                   "sem_init",
                                                   "sem_post",
                                                   "sem_trywait",
                                                   "sem_wait",
                                                   "pthread_attr_destroy",
                                                   "pthread_attr_setdetachstate",
                                                   "pthread_attr_setinheritsched",
                                                   "pthread_cancel",
                                                   "pthread_detach",
                                                   "pthread_equal",
                                                   "pthread_getconcurrency",
                                                   "pthread_getspecific",
                                                   "pthread_join",
                                                   "pthread_key_delete",
                                                   "pthread_mutex_destroy",
                                                   "pthread_mutex_init",
                                                   "pthread_mutex_lock",
                                                   "pthread_mutex_trylock",
                                                   "pthread_mutex_unlock",
                                                   "pthread_mutexattr_destroy",
                                                   "pthread_mutexattr_init",
                                                   "pthread_setcancelstate",
                                                   "pthread_setconcurrency"};

// The names that the dynamic linker takes from the C library, without its internal ones.
std::set<std::string> needed_names() {
  const support::Outcome listed =
      support::run({"nm", "-D", "--undefined-only", ZORVCRT_BINARY_DIR "/lib/libzorvcrt_core.so.2"});
  EXPECT_EQ(listed.status, 0) << listed.errors;
  std::set<std::string> names;
  std::istringstream lines(listed.output);
  for (std::string word; lines >> word;) {
    const std::size_t version = word.find("@GLIBC_");
    if (version != std::string::npos && word[0] != '_') names.insert(word.substr(0, version));
  }
  return names;
}

TEST(WatchedCalls, AreAllThatCanFailOfWhatTheLibraryNeeds) {
  const std::set<std::string> names = needed_names();
  EXPECT_GT(names.size(), 50U);
  for (const std::string &name : names) {
    const bool is_known = support::is_watched(name) || kMemory.contains(name) || kPure.contains(name) ||
                          kWithoutConsequence.contains(name);
    EXPECT_TRUE(is_known) << name << " is neither watched nor known to be harmless";
  }
}

}  // namespace
