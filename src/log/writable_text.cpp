// The kernel writes the terminator: into memory that cannot be written it answers EFAULT where a store of our
// own would end the process.
#include "writable_text.hpp"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "errno_keeper.hpp"
#include "handles.hpp"

namespace {

enum class Outcome { kWritten, kNotWritable, kNotAllowed };

Outcome write_across_processes(char *position) {
  char terminator = '\0';
  const iovec source{&terminator, 1};
  const iovec target{position, 1};
  if (::process_vm_writev(::getpid(), &source, 1, &target, 1, 0) == 1) return Outcome::kWritten;
  return errno == EFAULT ? Outcome::kNotWritable : Outcome::kNotAllowed;
}

// Works everywhere at the price of two descriptors for a moment.
void write_through_pipe(char *position) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
  const zorvcrt::UniqueDescriptor reader(ends[0]);
  const zorvcrt::UniqueDescriptor writer(ends[1]);
  if (::write(writer.get(), "", 1) == 1 && ::read(reader.get(), position, 1) != 1) return;
}

}  // namespace

void zorvcrt::terminate_if_writable(const char *position) {
  const ErrnoKeeper callers_errno;
  // Containers may forbid the first way.
  auto *target = const_cast<char *>(position);
  if (write_across_processes(target) == Outcome::kNotAllowed) write_through_pipe(target);
}
