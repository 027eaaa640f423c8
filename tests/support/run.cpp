#include "run.hpp"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace support {

namespace {

std::string content_of(int file) {
  std::string text;
  char block[65536];
  ::lseek(file, 0, SEEK_SET);
  for (ssize_t count = 0; (count = ::read(file, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(count));
  }
  ::close(file);
  return text;
}

int file_with(const std::string &text) {
  const int file = ::memfd_create("stream", MFD_CLOEXEC);
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = ::write(file, text.data() + done, text.size() - done);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  ::lseek(file, 0, SEEK_SET);
  return file;
}

}  // namespace

Outcome run(const std::vector<std::string> &words, const std::string &input, const Variables &variables) {
  const int streams[3] = {file_with(input), file_with(""), file_with("")};
  const pid_t child = ::fork();
  if (child == 0) {
    for (int i = 0; i < 3; ++i) {
      ::dup2(streams[i], i);
    }
    for (const auto &[name, value] : variables) {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char *> arguments;
    for (const std::string &word : words) {
      arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
  Outcome outcome;
  int status = 0;
  if (child > 0 && ::waitpid(child, &status, 0) == child) {
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  ::close(streams[0]);
  outcome.output = content_of(streams[1]);
  outcome.errors = content_of(streams[2]);
  return outcome;
}

Outcome run_zorvcrt(std::vector<std::string> words, const std::string &input, const Variables &variables) {
  words.insert(words.begin(), ZORVCRT_BINARY_DIR "/tools/zorvcrt");
  return run(words, input, variables);
}

}  // namespace support
