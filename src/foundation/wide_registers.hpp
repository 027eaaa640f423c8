// Whether this machine has the 256-bit registers (AVX2) that some inner loops have a second form for, or the
// 512-bit ones (AVX-512) that some have a third form for.
#pragma once

#include <atomic>

namespace zorvcrt {

/// Whether this build leaves out what is written for one processor.
#ifdef ZORVCRT_PORTABLE
inline constexpr bool kPortable = true;
#else
inline constexpr bool kPortable = false;
#endif

/// What the processor has answered. Zero when loaded; each one has what those in front of it have.
enum class WideRegisters : int { kNotAsked, kMissing, kOf256Bits, kOf512Bits };
extern std::atomic<WideRegisters> wide_registers;

/// Asks the processor, once for all threads or nearly so: those that ask together find the same answer.
WideRegisters ask_for_wide_registers();

/// Whether there are registers as wide as these, which are not kNotAsked. No part of a portable build.
inline bool has_registers(WideRegisters wanted) {
  const WideRegisters answer = wide_registers.load(std::memory_order_relaxed);
  if (answer >= wanted) return true;
  return answer == WideRegisters::kNotAsked && ask_for_wide_registers() >= wanted;
}

inline bool has_wide_registers() {
  return has_registers(WideRegisters::kOf256Bits);
}

/// Whether there are the widest registers, and operations on their bytes and 16-bit numbers.
inline bool has_widest_registers() {
  return has_registers(WideRegisters::kOf512Bits);
}

}  // namespace zorvcrt
