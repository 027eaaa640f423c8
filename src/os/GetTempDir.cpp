// The directory for temporary files and fresh names in it, made as tempnam() makes them.
//
// tempnam() itself would let TMPDIR move the names out of "/tmp/", and linkers warn of it.
#include "GetTempDir.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "FileStatus.h"
#include "fixed_text.hpp"

namespace {

constexpr char kFolder[] = "/tmp/";
constexpr std::size_t kFolderLength = sizeof kFolder - 1;
constexpr std::size_t kPrefixLength = 5;
constexpr std::string_view kDefaultPrefix = "file";
constexpr std::size_t kRandomLength = 6;
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kNameArea = 1024;

using Name = zorvcrt::FixedText<kFolderLength + kPrefixLength + kRandomLength + 1>;

// The clock serves where the kernel has no random bytes yet; names need to differ, not to be secret.
uint64_t random_bits(uint64_t attempt) {
  uint64_t bits = 0;
  if (::getrandom(&bits, sizeof bits, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof bits)) return bits;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  constexpr uint64_t kSpread = 0x9E3779B97F4A7C15U;  // 2^64 divided by the golden ratio
  return (static_cast<uint64_t>(now.tv_nsec) + attempt) * kSpread ^ static_cast<uint64_t>(::getpid());
}

void append_random(Name &name, uint64_t bits) {
  for (std::size_t i = 0; i < kRandomLength; ++i) {
    name.append(kAlphabet[bits % kAlphabet.size()]);
    bits /= kAlphabet.size();
  }
}

// Returns 0 when nothing has the name, EEXIST when something has, or why that cannot be told.
int check_free(const Name &name) {
  struct stat status;
  if (::lstat(name.c_str(), &status) == 0) return EEXIST;
  return errno == ENOENT ? 0 : errno;
}

int make_fresh_name(Name &name, std::string_view prefix) {
  ZfxFileStatus status;
  if (const int error = ZfxStatFile(&status, kFolder); error != 0) return error;
  name.assign(kFolder);
  name.append({prefix.data(), std::min(prefix.size(), kPrefixLength)});
  const std::size_t fixed_size = name.size();
  int error = EEXIST;
  for (uint64_t attempt = 0; attempt < TMP_MAX && error == EEXIST; ++attempt) {
    name.truncate(fixed_size);
    append_random(name, random_bits(attempt));
    error = check_free(name);
  }
  return error;
}

}  // namespace

int32_t ZfxGetTempDir(char *buffer, int32_t /*size*/) {
  if (buffer == nullptr) return -1;
  return static_cast<int32_t>(zorvcrt::copy_text(buffer, sizeof kFolder, kFolder));
}

int32_t ZfxGetTempFileName(char *buffer, int32_t size, const char *prefix) {
  if (buffer == nullptr || size < 1) return -1;
  const std::string_view given = zorvcrt::view_of(prefix);
  Name name;
  const int error = make_fresh_name(name, given.empty() ? kDefaultPrefix : given);
  if (error == 0) zorvcrt::copy_text(buffer, size, name.view());
  return error;
}

int32_t ZfxGetTempFile(const char *prefix) {
  std::array<char, kNameArea> name;
  if (const int error = ZfxGetTempFileName(name.data(), name.size(), prefix); error != 0) {
    errno = error;
    return -1;
  }
  return ::open(name.data(), O_RDWR);
}
