// Asking the processor itself: the compiler's own query registers code that runs when the library is loaded,
// where nothing of ours may run.
#include "wide_registers.hpp"

#include <cpuid.h>

#include <cstdint>

namespace zorvcrt {

namespace {

// What the operating system keeps for a thread: the first extended control register.
uint32_t kept_state() {
  uint32_t low = 0;
  uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

WideRegisters processor_answer() {
  constexpr uint32_t kStateOf256Bits = 0x06;  // the low and high halves of the 256-bit registers
  constexpr uint32_t kStateOf512Bits = 0xE6;  // and the masks, the rest of the first 16 registers, 16 more
  constexpr uint32_t kOperations = bit_AVX512F | bit_AVX512BW;
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0) return WideRegisters::kMissing;
  const uint32_t kept = kept_state();
  if ((kept & kStateOf256Bits) != kStateOf256Bits) return WideRegisters::kMissing;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0 || (b & bit_AVX2) == 0) return WideRegisters::kMissing;
  const bool has_widest = (kept & kStateOf512Bits) == kStateOf512Bits && (b & kOperations) == kOperations;
  return has_widest ? WideRegisters::kOf512Bits : WideRegisters::kOf256Bits;
}

}  // namespace

std::atomic<WideRegisters> wide_registers{WideRegisters::kNotAsked};

WideRegisters ask_for_wide_registers() {
  const WideRegisters answer = processor_answer();
  wide_registers.store(answer, std::memory_order_relaxed);
  return answer;
}

}  // namespace zorvcrt
