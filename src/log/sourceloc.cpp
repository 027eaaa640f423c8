// Source locations, each thread's in a buffer of its own that goes away with the thread.
#include "sourceloc.h"

#include "fixed_text.hpp"
#include "handles.hpp"
#include "lazy_tls_key.hpp"
#include "text_writer.hpp"

namespace {

constexpr std::size_t kBufferSize = 1024;

// No destructor of ours: the default one releases the thread's buffer.
constinit zorvcrt::LazyTlsKey buffer_key(nullptr);

// The calling thread's buffer, made at its first call; null when memory or a key is lacking.
char *thread_buffer() {
  const auto key = buffer_key.get();
  if (!key) return nullptr;
  if (void *buffer = ZfxGetTLSValue(*key); buffer != nullptr) return static_cast<char *>(buffer);
  zorvcrt::UniqueBlock<char> buffer(static_cast<char *>(ZfxMemAlloc(kBufferSize)));
  return ZfxSetTLSValue(*key, buffer.get()) == 0 ? buffer.release() : nullptr;
}

// Runs when the library is unloaded: a thread that outlives it must not call a destructor that is gone. The
// buffers of such threads stay.
__attribute__((destructor)) void unload_buffers() {
  if (const auto key = buffer_key.existing(); key) ZfxMemFree(ZfxGetTLSValue(*key));
  buffer_key.close();
}

std::string_view base_name(std::string_view path) {
  path.remove_prefix(path.rfind('/') + 1);  // without a '/', npos + 1 is 0
  return path;
}

}  // namespace

const char *ZfxGetSourceLocation(const char *function, const char *file, int32_t line) {
  char *const buffer = thread_buffer();
  if (buffer == nullptr) return "";
  zorvcrt::TextWriter text({buffer, kBufferSize});
  text.append(zorvcrt::view_of(function)).append("@").append(base_name(zorvcrt::view_of(file)));
  text.append(":").append_number(line).finish();
  return buffer;
}
