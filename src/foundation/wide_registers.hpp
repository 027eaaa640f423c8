// Whether this machine has the 256-bit registers (AVX2) that some inner loops have a second form for.
#pragma once

namespace zorvcrt {

/// Whether this build leaves out what is written for one processor.
#ifdef ZORVCRT_PORTABLE
inline constexpr bool kPortable = true;
#else
inline constexpr bool kPortable = false;
#endif

/// Asks the processor once and remembers the answer; any number of threads may ask at a time. No part of a
/// portable build.
bool has_wide_registers();

}  // namespace zorvcrt
