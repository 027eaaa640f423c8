// The two growth rules of a text and the blocks they work on.
#include "strbuf_text.hpp"

#include <utility>

#include "handles.hpp"

namespace zorvcrt {

namespace {

// A zero-filled block of at least size bytes.
UniqueBlock<char> __strbuf_alloc_string(int64_t size) {
  return UniqueBlock<char>(static_cast<char *>(ZfxMemAlloc(bytes(rounded_up(size)))));
}

// What a block is enlarged to when size bytes are wanted of it.
int64_t roomy(const Text &buffer, int64_t size) {
  return std::max(size, 2 * buffer.block_size);
}

// Enlarges the block to size bytes or more and keeps its content; added bytes have no value yet.
bool enlarge_block(Text &buffer, int64_t size) {
  if (size <= buffer.block_size) return true;
  const int64_t offset = buffer.data == nullptr ? 0 : buffer.end - buffer.data;
  int64_t taken = roomy(buffer, size);
  void *block = ZfxMemRealloc(buffer.data, bytes(taken));
  if (block == nullptr) block = ZfxMemRealloc(buffer.data, bytes(taken = size));
  if (block == nullptr) return false;
  buffer.data = static_cast<char *>(block);
  buffer.end = buffer.data + offset;
  buffer.reach = buffer.end;
  buffer.block_size = taken;
  return true;
}

// Replaces the text in a block that is large enough, and clears the block up to size bytes.
void write_text(Text &buffer, const char *text, int64_t n, int64_t size) {
  const int64_t written = text == nullptr ? 0 : n;
  if (written > 0) std::memmove(buffer.data, text, bytes(written));
  if (size > written) std::memset(buffer.data + written, 0, bytes(size - written));
  end_text(buffer, n);
}

// Replaces the text when the capacity does not reach for it.
bool write_text_grown(Text &buffer, const char *text, int32_t n) {
  const int64_t capacity = capacity_above(static_cast<uint32_t>(n), buffer.step);
  const int64_t size = rounded_up(capacity + 1);
  if (capacity > INT32_MAX) return false;
  UniqueBlock<char> old;  // released at the end: the text may lie in it
  if (buffer.data == nullptr || size > buffer.block_size) {
    int64_t taken = roomy(buffer, size);
    UniqueBlock<char> block = __strbuf_alloc_string(taken);
    if (!block) block = __strbuf_alloc_string(taken = size);
    if (!block) return false;
    old.reset(std::exchange(buffer.data, block.release()));
    buffer.block_size = taken;
    write_text(buffer, text, n, 0);
  } else {
    write_text(buffer, text, n, size);
  }
  buffer.capacity = static_cast<int32_t>(capacity);
  return true;
}

// Moves the text into a new block that is zero-filled behind it.
bool move_to_cleared_block(Text &buffer, int64_t size) {
  int64_t taken = roomy(buffer, size);
  UniqueBlock<char> block = __strbuf_alloc_string(taken);
  if (!block) block = __strbuf_alloc_string(taken = size);
  if (!block) return false;
  ZfxMemCopy(block.get(), buffer.data, bytes(buffer.length));
  ZfxMemFree(std::exchange(buffer.data, block.release()));
  buffer.block_size = taken;
  return true;
}

// Gives the block size bytes, all zero behind the text but for the first ones, which the caller writes.
bool provide(Text &buffer, int64_t size, int64_t about_to_be_written) {
  const int64_t kept = buffer.length + about_to_be_written;
  // A long stretch of zeros is cheaper from the allocator than from memset.
  if (size > buffer.block_size && size - kept > kept) return move_to_cleared_block(buffer, size);
  if (!enlarge_block(buffer, size)) return false;
  std::memset(buffer.data + kept, 0, bytes(size - kept));
  return true;
}

}  // namespace

char *set_text(Text &buffer, const char *text, int32_t n) {
  if (buffer.data == nullptr || buffer.capacity <= n) {
    return write_text_grown(buffer, text, n) ? buffer.data : nullptr;
  }
  if (text == nullptr && buffer.length > 0) *buffer.data = '\0';
  write_text(buffer, text, n, 0);
  return buffer.data;
}

bool make_room(Text &buffer, int32_t n, int32_t about_to_be_written) {
  if (buffer.capacity - buffer.length > n) {
    // Behind a trimmed text the end can stand further back than the capacity accounts for.
    return n <= 0 || enlarge_block(buffer, buffer.end - buffer.data + n + 1);
  }
  const int64_t capacity =
      capacity_above(static_cast<uint32_t>(buffer.length) + static_cast<uint32_t>(n) + 1, buffer.step);
  if (capacity > INT32_MAX || !provide(buffer, rounded_up(capacity), about_to_be_written)) return false;
  end_text(buffer, buffer.length);
  buffer.capacity = static_cast<int32_t>(capacity);
  return true;
}

char *append_text(Text &buffer, const char *text, int32_t n) {
  if (buffer.length == 0) return set_text(buffer, text, n);
  const bool own = text != nullptr && lies_in_block(buffer, text);
  const int64_t offset = own ? text - buffer.data : 0;
  if (!make_room(buffer, n, text == nullptr ? 0 : n)) return nullptr;
  char *const position = write_at_end(buffer, own ? buffer.data + offset : text, n);
  find_reach(buffer);
  return position;
}

}  // namespace zorvcrt
