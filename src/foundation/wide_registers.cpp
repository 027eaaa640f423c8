// Asking the processor itself: the compiler's own query registers code that runs when the library is loaded,
// where nothing of ours may run.
#include "wide_registers.hpp"

#include <cpuid.h>

#include <cstdint>

namespace zorvcrt {

namespace {

// The operating system keeps the wide registers of a thread (bits 1 and 2 of the first extended control
// register).
bool system_keeps_registers() {
  constexpr uint32_t kRegisterState = 6;
  uint32_t low = 0;
  uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (low & kRegisterState) == kRegisterState;
}

bool processor_answer() {
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0) return false;
  if (!system_keeps_registers()) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_AVX2) != 0;
}

}  // namespace

std::atomic<WideRegisters> wide_registers{WideRegisters::kNotAsked};

WideRegisters ask_for_wide_registers() {
  const WideRegisters answer = processor_answer() ? WideRegisters::kPresent : WideRegisters::kMissing;
  wide_registers.store(answer, std::memory_order_relaxed);
  return answer;
}

}  // namespace zorvcrt
