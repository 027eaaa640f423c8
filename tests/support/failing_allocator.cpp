#include "failing_allocator.hpp"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "next_function.hpp"

namespace support {

namespace {

struct Order {
  std::size_t count;  // requests seen
  std::size_t first;  // number of the request that fails, 0 for none
  std::size_t limit;  // largest request that is served
  bool persistent;
  bool failed;
};

thread_local Order order = {0, 0, SIZE_MAX, false, false};

std::atomic<long> blocks{0};  // in use, of all threads

bool refused(std::size_t size) {
  ++order.count;
  const bool ordered =
      order.first != 0 && (order.persistent ? order.count >= order.first : order.count == order.first);
  if (!ordered && size <= order.limit) return false;
  order.failed = true;
  errno = ENOMEM;
  return true;
}

// dlsym() itself may ask for memory while the real calloc is being looked up.
alignas(16) char bootstrap[4096];
std::size_t bootstrap_used = 0;

void *bootstrap_block(std::size_t size) {
  void *block = bootstrap + bootstrap_used;
  bootstrap_used += (size + 15) / 16 * 16;
  return block;
}

bool is_bootstrap_block(const void *block) {
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  const auto start = reinterpret_cast<std::uintptr_t>(bootstrap);
  return address >= start && address < start + sizeof bootstrap;
}

void *counted(void *block) {
  if (block != nullptr) blocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

// Plain pointers, set at the first use: a sanitizer asks for memory before anything of ours is initialised.
void *(*next_malloc)(std::size_t) = nullptr;
void *(*next_calloc)(std::size_t, std::size_t) = nullptr;
void *(*next_realloc)(void *, std::size_t) = nullptr;
void (*next_free)(void *) = nullptr;

// What runs behind exit(), such as a count of covered lines, has memory again.
void serve_the_end_of_the_process() {
  [[maybe_unused]] static const int registered = std::atexit([] { order = {0, 0, SIZE_MAX, false, false}; });
}

}  // namespace

FailingAllocator::FailingAllocator(std::size_t first, bool persistent) {
  serve_the_end_of_the_process();
  order = {0, first, SIZE_MAX, persistent, false};
}

bool FailingAllocator::stop() {
  if (order.first != 0) failed_ = order.failed;
  order.first = 0;
  return failed_;
}

LimitedAllocator::LimitedAllocator(std::size_t limit) {
  serve_the_end_of_the_process();
  order = {0, 0, limit, false, false};
}

LimitedAllocator::~LimitedAllocator() {
  order.limit = SIZE_MAX;
}

std::size_t allocations_since_last_call() {
  const std::size_t count = order.count;
  order.count = 0;
  return count;
}

long live_blocks() {
  return blocks.load(std::memory_order_relaxed);
}

}  // namespace support

extern "C" {

void *malloc(std::size_t size) {
  using support::next_malloc;
  if (next_malloc == nullptr) next_malloc = support::next_function<void *(*)(std::size_t)>("malloc");
  return support::refused(size) ? nullptr : support::counted(next_malloc(size));
}

void *calloc(std::size_t count, std::size_t size) {
  using support::next_calloc;
  static bool looking = false;
  if (next_calloc == nullptr) {
    if (looking) return support::bootstrap_block(count * size);
    looking = true;
    next_calloc = support::next_function<void *(*)(std::size_t, std::size_t)>("calloc");
    looking = false;
  }
  return support::refused(count * size) ? nullptr : support::counted(next_calloc(count, size));
}

void *realloc(void *block, std::size_t size) {
  using support::next_realloc;
  if (next_realloc == nullptr)
    next_realloc = support::next_function<void *(*)(void *, std::size_t)>("realloc");
  if (block == nullptr) return malloc(size);
  if (size != 0) return support::refused(size) ? nullptr : next_realloc(block, size);
  free(block);
  return nullptr;
}

void free(void *block) {
  using support::next_free;
  if (block == nullptr || support::is_bootstrap_block(block)) return;
  static bool looking = false;
  if (next_free == nullptr) {
    if (looking) return;  // dlsym() gives back the text of an earlier error, which may stay
    looking = true;
    next_free = support::next_function<void (*)(void *)>("free");
    looking = false;
  }
  support::blocks.fetch_sub(1, std::memory_order_relaxed);
  next_free(block);
}

// A sanitizer's own would take its block past the functions above.
char *strdup(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  void *copy = malloc(size);
  return copy == nullptr ? nullptr : static_cast<char *>(std::memcpy(copy, text, size));
}

}  // extern "C"
