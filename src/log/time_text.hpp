// The time as log lines show it.
#pragma once

#include <string_view>

namespace zorvcrt {

/// The current time as ctime() gives it without the year, and a blank: "Sun Nov 15 08:38:12 ". The text
/// belongs to the calling thread and is valid until its next call.
std::string_view current_time_text();

}  // namespace zorvcrt
