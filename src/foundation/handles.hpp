// Owners of what must be given back: heap blocks, streams, directories and descriptors.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "zfxmemory.h"

namespace zorvcrt {

struct ZfxMemDeleter {
  void operator()(void *block) const { ZfxMemFree(block); }
};
struct FreeDeleter {
  void operator()(void *block) const { std::free(block); }
};
struct FileCloser {
  void operator()(FILE *file) const { std::fclose(file); }
};
struct DirectoryCloser {
  void operator()(DIR *directory) const { ::closedir(directory); }
};

/// A block of ZfxMemAlloc(), to be handed over with release().
template <class T>
using UniqueBlock = std::unique_ptr<T, ZfxMemDeleter>;

/// A block of malloc() and its kin that never leaves the library.
template <class T>
using UniqueMalloc = std::unique_ptr<T, FreeDeleter>;

using UniqueFile = std::unique_ptr<FILE, FileCloser>;
using UniqueDirectory = std::unique_ptr<DIR, DirectoryCloser>;

/// A zero-filled T in a block of ZfxMemAlloc(); empty when the allocator fails.
template <class T>
UniqueBlock<T> allocate_record() {
  return UniqueBlock<T>(static_cast<T *>(ZfxMemAlloc(sizeof(T))));
}

/// An open descriptor, or none (-1).
class UniqueDescriptor {
 public:
  explicit UniqueDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  UniqueDescriptor(UniqueDescriptor &&other) noexcept : descriptor_(other.release()) {}
  UniqueDescriptor &operator=(UniqueDescriptor &&other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueDescriptor(const UniqueDescriptor &) = delete;
  UniqueDescriptor &operator=(const UniqueDescriptor &) = delete;
  ~UniqueDescriptor() { reset(); }

  [[nodiscard]] int get() const { return descriptor_; }
  [[nodiscard]] bool is_open() const { return descriptor_ >= 0; }
  int release() { return std::exchange(descriptor_, -1); }
  void reset(int descriptor = -1) {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = descriptor;
  }

 private:
  int descriptor_;
};

}  // namespace zorvcrt
