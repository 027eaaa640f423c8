// Standard input and output as blocks of bytes, for the commands that encode what passes through them.
#pragma once

#include <cstddef>

namespace tools {

/// Fills an area from standard input. Gives fewer bytes only at its end; throws Failure when it cannot be
/// read.
std::size_t read_input(void *area, std::size_t size);

/// Writes to standard output; false when that fails, which main() reports.
[[nodiscard]] bool write_output(const void *bytes, std::size_t size);

}  // namespace tools
