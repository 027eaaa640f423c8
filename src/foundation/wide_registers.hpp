// Whether this machine has the 256-bit registers (AVX2) that some inner loops have a second form for.
#pragma once

namespace zorvcrt {

/// Asks the processor once and remembers the answer; any number of threads may ask at a time.
bool has_wide_registers();

}  // namespace zorvcrt
