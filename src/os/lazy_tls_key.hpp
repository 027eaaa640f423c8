// A thread-local-storage key that the library makes for itself when it is first needed.
#pragma once

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <optional>

#include "tls.h"

namespace zorvcrt {

/// Constant-initialised. Threads may race for the first use: one of them makes the key, all of them get it.
/// Whoever owns one closes it when the library is unloaded.
class LazyTlsKey {
 public:
  /// @param destructor as for ZfxCreateTLS()
  explicit constexpr LazyTlsKey(ZfxTLSDestructor destructor) : destructor_(destructor) {}

  /// The key, made now if need be; none when the system has no key left or when it has been closed.
  std::optional<uint32_t> get() {
    int64_t state = state_.load(std::memory_order_acquire);
    if (state == kNotMade) state = make();
    return key_of(state);
  }

  /// The key if there is one.
  [[nodiscard]] std::optional<uint32_t> existing() const {
    return key_of(state_.load(std::memory_order_acquire));
  }

  /// Gives the key back for good. Returns the result of that, 0 when no key was ever made, EINVAL when it has
  /// been given back before: by then the number may be that of somebody else's key.
  int32_t close() {
    int64_t state = state_.load(std::memory_order_acquire);
    if (state == kNotMade) return 0;
    if (state == kClosed || !state_.compare_exchange_strong(state, kClosed)) return EINVAL;
    return ZfxDeleteTLS(static_cast<uint32_t>(state));
  }

 private:
  // The states beside a key's number.
  static constexpr int64_t kNotMade = -1;
  static constexpr int64_t kClosed = -2;

  static std::optional<uint32_t> key_of(int64_t state) {
    if (state < 0) return std::nullopt;
    return static_cast<uint32_t>(state);
  }

  int64_t make() {
    uint32_t key = 0;
    if (ZfxCreateTLS(&key, destructor_) != 0) return kNotMade;
    int64_t before = kNotMade;
    if (state_.compare_exchange_strong(before, key)) return key;
    ZfxDeleteTLS(key);
    return before;
  }

  ZfxTLSDestructor destructor_;
  std::atomic<int64_t> state_{kNotMade};
};

}  // namespace zorvcrt
