// Calls in a child that work, or end the process with what the scanner says when it has no memory.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "allocation_walk.hpp"
#include "process_end.hpp"

namespace faults {

inline constexpr std::string_view kNoBuffer = "out of dynamic memory in yy_create_buffer()\n";
inline constexpr std::string_view kNoStack = "out of dynamic memory in yyensure_buffer_stack()\n";

/// Makes the call, with its expectations; it may end the process with one of the messages.
template <class Call>
void in_child(Fault &fault, std::initializer_list<std::string_view> messages, Call call) {
  const ProcessEnd end = end_of(
      [&] {
        const long before = support::live_blocks();
        call();
        EXPECT_EQ(support::live_blocks(), before) << "blocks are left behind";
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (end.returned) return;
  EXPECT_EQ(end.status, 2);
  EXPECT_NE(std::find(messages.begin(), messages.end(), end.errors), messages.end()) << end.errors;
}

}  // namespace faults
