// The next line of a text file that is neither blank nor a comment.
#include "GetFileLine.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "TrimString.h"

namespace {

constexpr char kCommentMark = '#';

}  // namespace

char *GetFileLine(char *buffer, int32_t size, FILE *stream) {
  if (buffer == nullptr || size < 1 || stream == nullptr || std::feof(stream) != 0) return nullptr;
  std::memset(buffer, 0, static_cast<std::size_t>(size));
  // In a single byte fgets() would find an empty line for ever.
  while (size > 1 && std::fgets(buffer, size, stream) != nullptr) {
    TrimString(buffer);
    if (*buffer != '\0' && *buffer != kCommentMark) return buffer;
  }
  *buffer = '\0';
  return nullptr;
}
