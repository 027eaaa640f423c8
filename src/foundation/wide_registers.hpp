// Whether this machine has the 256-bit registers (AVX2) that some inner loops have a second form for.
#pragma once

#include <atomic>

namespace zorvcrt {

/// Whether this build leaves out what is written for one processor.
#ifdef ZORVCRT_PORTABLE
inline constexpr bool kPortable = true;
#else
inline constexpr bool kPortable = false;
#endif

/// What the processor has answered. Zero when loaded.
enum class WideRegisters : int { kNotAsked, kMissing, kPresent };
extern std::atomic<WideRegisters> wide_registers;

/// Asks the processor, once for all threads or nearly so: those that ask together find the same answer.
WideRegisters ask_for_wide_registers();

/// Whether there are wide registers. No part of a portable build.
inline bool has_wide_registers() {
  const WideRegisters answer = wide_registers.load(std::memory_order_relaxed);
  if (answer == WideRegisters::kPresent) return true;
  return answer == WideRegisters::kNotAsked && ask_for_wide_registers() == WideRegisters::kPresent;
}

}  // namespace zorvcrt
