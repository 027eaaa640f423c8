// The per-thread settings cache. A thread's copy of the file is one block that holds the trimmed lines in
// file order, each ended by a line feed, with the first line at its head: releasing the head releases all.
#include "readrcs.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "CompareString.h"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "lazy_tls_key.hpp"
#include "small_block.hpp"
#include "whitespace.hpp"

namespace {

using zorvcrt::UniqueBlock;
using zorvcrt::UniqueFile;

constexpr std::array kFiles{"/usr/local/zorv/sys/conf/quor.conf", "/.ZORVrcs"};
constexpr int kLineLimit = 511;  // of fgets(): a piece of a line has at most one character less
constexpr std::size_t kFirstCapacity = 4096;

constinit zorvcrt::LazyTlsKey library_key(tlsRCSDealloc);

UniqueFile open_file() {
  for (const char *path : kFiles) {
    if (UniqueFile file{std::fopen(path, "re")}; file) return file;
  }
  return nullptr;
}

// A growing text of lines; empty without any.
class Lines {
 public:
  // Appends a line and its end. False when memory is lacking.
  bool append(std::string_view line) {
    const std::size_t needed = size_ + line.size() + 2;
    if (needed > capacity_ && !grow(needed)) return false;
    std::memcpy(text_.get() + size_, line.data(), line.size());
    size_ += line.size();
    text_.get()[size_++] = '\n';
    text_.get()[size_] = '\0';
    return true;
  }
  UniqueBlock<char> release() { return std::move(text_); }

 private:
  bool grow(std::size_t needed) {
    const std::size_t capacity = std::max({kFirstCapacity, 2 * capacity_, needed});
    auto *block = static_cast<char *>(ZfxMemRealloc(text_.get(), capacity));
    if (block == nullptr) return false;
    static_cast<void>(text_.release());
    text_.reset(block);
    capacity_ = capacity;
    return true;
  }

  UniqueBlock<char> text_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// All of the file's lines; none for an empty file or when memory is lacking.
UniqueBlock<char> read_lines(FILE *file) {
  Lines lines;
  std::array<char, kLineLimit> piece;
  while (std::fgets(piece.data(), kLineLimit, file) != nullptr) {
    if (!lines.append(zorvcrt::trimmed_back(piece.data()))) return nullptr;
  }
  return lines.release();
}

// The value without a comment. Its first character stays even when it is a blank in front of the comment.
std::string_view without_comment(std::string_view value) {
  const std::size_t comment = value.find('#');
  if (comment == std::string_view::npos) return value;
  std::size_t end = comment;
  while (end > 1 && zorvcrt::is_space(value[end - 1])) {
    --end;
  }
  return {value.data(), end};
}

bool is_same_name(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ZfxCompareLenNoCase(a.data(), b.data(), static_cast<int32_t>(a.size())) == 0;
}

char *find_setting(std::string_view lines, std::string_view name) {
  while (!lines.empty()) {
    const std::string_view line{lines.data(), lines.find('\n')};
    lines.remove_prefix(line.size() + 1);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !is_same_name({line.data(), equals}, name)) continue;
    return zorvcrt::new_text(without_comment({line.data() + equals + 1, line.size() - equals - 1}));
  }
  return nullptr;
}

char *answer(const char *lines, const char *name) {
  if (const char *value = std::getenv(name); value != nullptr) return ZfxStrDup(value);
  return find_setting(zorvcrt::view_of(lines), name);
}

// Runs when the library is unloaded: a thread that outlives it must not call a destructor that is gone.
__attribute__((destructor)) void unload_copies() {
  ZfxCloseRCS();
}

}  // namespace

char *ZfxReadRCS(const char *name, uint32_t mask) {
  const auto key = library_key.get();
  return key ? ZfxReadTlsRCS(*key, name, mask) : nullptr;
}

char *ZfxReadTlsRCS(uint32_t key, const char *name, uint32_t /*mask*/) {
  if (name == nullptr) return nullptr;
  if (const void *lines = ZfxGetTLSValue(key); lines != nullptr) {
    return answer(static_cast<const char *>(lines), name);
  }
  UniqueFile file = open_file();
  if (!file) return nullptr;
  UniqueBlock<char> lines = read_lines(file.get());
  file.reset();
  char *value = answer(lines.get(), name);
  if (ZfxSetTLSValue(key, lines.get()) == 0) static_cast<void>(lines.release());
  return value;
}

void ZfxFreeRCS(char *string) {
  ZfxMemFree(string);
}

int32_t ZfxOpenTlsRCS(uint32_t key) {
  return ZfxSetTLSValue(key, nullptr);
}

void ZfxCloseTlsRCS(uint32_t key) {
  const UniqueBlock<void> list(ZfxGetTLSValue(key));
  ZfxSetTLSValue(key, nullptr);
}

int32_t ZfxCloseRCS(void) {
  if (const auto key = library_key.existing(); key) ZfxCloseTlsRCS(*key);
  return library_key.close();
}

void tlsRCSDealloc(void *list) {
  // A caller's key may hold this list while the library's own holds another one that is still in use.
  if (const auto key = library_key.existing(); key && ZfxGetTLSValue(*key) == list) {
    ZfxSetTLSValue(*key, nullptr);
  }
  ZfxMemFree(list);
}
