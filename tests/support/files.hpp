// Files and folders for tests: everything a test writes lies in a temporary folder that goes away with it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

/// A new folder under /tmp, removed with all that is in it at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  [[nodiscard]] const std::string &path() const { return path_; }
  [[nodiscard]] std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

/// Makes the current folder another one and comes back at the end.
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::string &path);
  ~CurrentFolder();
  CurrentFolder(const CurrentFolder &) = delete;
  CurrentFolder &operator=(const CurrentFolder &) = delete;

 private:
  std::filesystem::path before_;
};

/// Sets (or with null unsets) an environment variable and puts back what was there at the end.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const char *value);
  ~EnvironmentVariable();
  EnvironmentVariable(const EnvironmentVariable &) = delete;
  EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

 private:
  std::string name_;
  bool was_set_ = false;
  std::string before_;
};

/// Catches what is written to a descriptor (1 for standard output, 2 for standard error) until text() is
/// called.
class CapturedDescriptor {
 public:
  explicit CapturedDescriptor(int descriptor);
  ~CapturedDescriptor();
  CapturedDescriptor(const CapturedDescriptor &) = delete;
  CapturedDescriptor &operator=(const CapturedDescriptor &) = delete;

  /// Ends the capture and tells what was caught; later calls tell the same.
  const std::string &text();

 private:
  int descriptor_;
  int saved_;
  int file_;
  std::string text_;
};

/// Writes a file, and the folders above it that are missing.
void write_file(const std::string &path, std::string_view text);

/// The content of a file; a test failure and "" when it cannot be read.
std::string read_file(const std::string &path);

/// Makes a symbolic link, and the folders above it that are missing.
void make_link(const std::string &target, const std::string &path);

/// Counts the open descriptors of this process.
int open_descriptors();

}  // namespace support
