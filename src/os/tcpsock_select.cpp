// The waits for readiness: select() over one socket, with sets of our own that are as long as the socket
// needs, since an fd_set ends at FD_SETSIZE and a host with many connections does not.
#include <fcntl.h>
#include <sys/select.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "handles.hpp"
#include "tcpsock.h"

namespace {

enum class Wanted { kReadable, kWritable };

// What select() reads and writes: a bit for each descriptor in words of this type.
using Word = unsigned long;
constexpr std::size_t kWordBits = sizeof(Word) * CHAR_BIT;

class DescriptorSet {
 public:
  DescriptorSet() : small_{} {}

  // Makes the open descriptor the only member; false with errno set when memory is short.
  bool hold(int descriptor) {
    const auto bit = static_cast<std::size_t>(descriptor);
    word_ = bit / kWordBits;
    mask_ = Word{1} << (bit % kWordBits);
    if (word_ >= small_.size()) {
      large_.reset(static_cast<Word *>(std::calloc(word_ + 1, sizeof(Word))));
      if (large_ == nullptr) return false;
    }
    words()[word_] = mask_;
    return true;
  }
  bool still_holds_it() { return (words()[word_] & mask_) != 0; }
  fd_set *get() { return reinterpret_cast<fd_set *>(words()); }

 private:
  Word *words() { return large_ != nullptr ? large_.get() : small_.data(); }

  std::array<Word, FD_SETSIZE / kWordBits> small_;
  zorvcrt::UniqueMalloc<Word> large_;
  std::size_t word_ = 0;
  Word mask_ = 0;
};

struct Conditions {
  DescriptorSet ready;
  DescriptorSet exceptional;
};

int32_t select_one(int32_t socket, Wanted wanted, timeval *timeout, Conditions &conditions) {
  // Beyond the table of open descriptors select() would not notice that this one is closed, and wait.
  if (::fcntl(socket, F_GETFD) < 0) return -1;
  if (!conditions.ready.hold(socket) || !conditions.exceptional.hold(socket)) return -1;
  fd_set *const readable = wanted == Wanted::kReadable ? conditions.ready.get() : nullptr;
  fd_set *const writable = wanted == Wanted::kWritable ? conditions.ready.get() : nullptr;
  return ::select(socket + 1, readable, writable, conditions.exceptional.get(), timeout);
}

void store(int32_t *error, int32_t number) {
  if (error != nullptr) *error = number;
}

int32_t wait_until(Wanted wanted, int32_t socket, timeval *timeout, int32_t *error) {
  Conditions conditions;
  const int32_t result = select_one(socket, wanted, timeout, conditions);
  const bool exceptional = result > 0 && conditions.exceptional.still_holds_it();
  const bool ready = result > 0 && conditions.ready.still_holds_it();
  if (result < 0 || exceptional) {
    store(error, errno);
  } else if (result == 0 || ready) {
    store(error, 0);
  }
  return exceptional && wanted == Wanted::kWritable ? -1 : result;
}

}  // namespace

int32_t ZfxSocketReadSelect(int32_t socket, struct timeval *timeout, int32_t *error) {
  return wait_until(Wanted::kReadable, socket, timeout, error);
}

int32_t ZfxSocketWriteSelect(int32_t socket, struct timeval *timeout, int32_t *error) {
  return wait_until(Wanted::kWritable, socket, timeout, error);
}
