// Shortening a caller's text in place where its memory allows that.
#pragma once

namespace zorvcrt {

/// Puts a terminator at the position; does nothing when its memory cannot be written. Leaves errno alone.
void terminate_if_writable(const char *position);

}  // namespace zorvcrt
