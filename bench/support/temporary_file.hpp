// A file with given text, removed when the program ends.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace bench {

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string &text) {
    const int descriptor = ::mkstemp(path_.data());
    if (descriptor >= 0) ::close(descriptor);
    std::ofstream(path_) << text;
  }
  ~TemporaryFile() { ::unlink(path_.c_str()); }
  TemporaryFile(const TemporaryFile &) = delete;
  TemporaryFile &operator=(const TemporaryFile &) = delete;

  [[nodiscard]] const char *path() const { return path_.c_str(); }

 private:
  std::string path_ = "/tmp/zorvcrt-bench-XXXXXX";
};

}  // namespace bench
