// Calls that may end the process, made in a child whose end tells what has happened.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "files.hpp"

namespace faults {

/// How the child came to its end.
struct ProcessEnd {
  bool returned = false;  // the call came back, and all expectations were met
  bool struck = false;    // a failure has been met
  int status = -1;        // the exit status, or 128 + the signal that ended the child
  std::string errors;     // what it printed on standard error
};

/// Makes the call, with its expectations, in a child; then asks whether a failure has been met.
template <class Call, class Struck>
ProcessEnd end_of(Call call, Struck struck) {
  constexpr int kUntouched = 101;
  constexpr int kSurvived = 102;
  constexpr int kWrong = 103;
  const int errors = ::memfd_create("errors", MFD_CLOEXEC);
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(errors, STDERR_FILENO);
    call();
    std::fflush(nullptr);
    if (::testing::Test::HasFailure()) ::_exit(kWrong);
    ::_exit(struck() ? kSurvived : kUntouched);
  }
  ProcessEnd end;
  int status = 0;
  if (child > 0 && ::waitpid(child, &status, 0) == child) {
    end.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  end.returned = end.status == kUntouched || end.status == kSurvived;
  end.struck = end.status != kUntouched;
  end.errors = support::read_file("/proc/self/fd/" + std::to_string(errors));
  ::close(errors);
  return end;
}

}  // namespace faults
