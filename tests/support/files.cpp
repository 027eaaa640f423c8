#include "files.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

namespace support {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : path_("/tmp/zorvcrt-test-XXXXXX") {
  if (::mkdtemp(path_.data()) == nullptr) {
    std::perror("mkdtemp");
    std::abort();
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

CurrentFolder::CurrentFolder(const std::string &path) : before_(fs::current_path()) {
  fs::current_path(path);
}

CurrentFolder::~CurrentFolder() {
  std::error_code ignored;
  fs::current_path(before_, ignored);
}

EnvironmentVariable::EnvironmentVariable(std::string name, const char *value) : name_(std::move(name)) {
  if (const char *before = std::getenv(name_.c_str()); before != nullptr) {
    was_set_ = true;
    before_ = before;
  }
  if (value == nullptr) {
    ::unsetenv(name_.c_str());
  } else {
    ::setenv(name_.c_str(), value, 1);
  }
}

EnvironmentVariable::~EnvironmentVariable() {
  if (was_set_) {
    ::setenv(name_.c_str(), before_.c_str(), 1);
  } else {
    ::unsetenv(name_.c_str());
  }
}

CapturedDescriptor::CapturedDescriptor(int descriptor)
    : descriptor_(descriptor), saved_(::dup(descriptor)), file_(::memfd_create("captured", MFD_CLOEXEC)) {
  std::fflush(nullptr);
  ::dup2(file_, descriptor_);
}

CapturedDescriptor::~CapturedDescriptor() {
  text();
}

const std::string &CapturedDescriptor::text() {
  if (saved_ < 0) return text_;
  std::fflush(nullptr);
  ::dup2(saved_, descriptor_);
  ::close(std::exchange(saved_, -1));
  ::lseek(file_, 0, SEEK_SET);
  char block[4096];
  for (ssize_t count = 0; (count = ::read(file_, block, sizeof block)) > 0;) {
    text_.append(block, static_cast<std::size_t>(count));
  }
  ::close(file_);
  return text_;
}

void write_file(const std::string &path, std::string_view text) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary);
  file << text;
  ASSERT_TRUE(file.flush()) << path << " cannot be written";
}

std::string read_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path << " cannot be read";
  return {std::istreambuf_iterator<char>(file), {}};
}

void make_link(const std::string &target, const std::string &path) {
  fs::create_directories(fs::path(path).parent_path());
  fs::create_symlink(target, path);
}

int open_descriptors() {
  int count = -1;  // the iterator's own
  for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd")) {
    ++count;
  }
  return count;
}

}  // namespace support
