// A standard input of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace standard_input {

/// The text is what the standard input stream reads as long as this lives.
class Input {
 public:
  explicit Input(const std::string &text) : before_(stdin) {
    const int file = ::memfd_create("input", MFD_CLOEXEC);
    EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::lseek(file, 0, SEEK_SET);
    stdin = ::fdopen(file, "r");
  }
  ~Input() {
    std::fclose(stdin);
    stdin = before_;
  }
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  /// What has not been read yet.
  static std::string rest() {
    std::string text;
    for (int c = std::getc(stdin); c != EOF; c = std::getc(stdin)) {
      text += static_cast<char>(c);
    }
    return text;
  }

 private:
  FILE *before_;
};

/// Whether a function that reads standard input succeeds in a child that is fed the text through a pipe.
inline bool holds_in_child(const std::string &text, bool (*function)()) {
  int pipe[2];
  if (::pipe(pipe) != 0) return false;
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(pipe[0], STDIN_FILENO);
    ::close(pipe[0]);
    ::close(pipe[1]);
    stdin = ::fdopen(STDIN_FILENO, "r");
    ::_exit(function() ? 0 : 1);
  }
  ::close(pipe[0]);
  for (const char c : text) {
    if (::write(pipe[1], &c, 1) != 1) break;  // piecemeal, as from a terminal
  }
  ::close(pipe[1]);
  int status = -1;
  ::waitpid(child, &status, 0);
  return status == 0;
}

}  // namespace standard_input
