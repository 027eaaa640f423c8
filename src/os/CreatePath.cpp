// Creation of a directory with all that is missing above it.
#include "CreatePath.h"

#include <cstddef>
#include <string_view>

#include "fixed_text.hpp"
#include "make_directory.hpp"

namespace {

constexpr std::size_t kPathArea = 1024;
using Path = zorvcrt::FixedText<kPathArea>;

bool is_separator(char c) {
  return c == '/' || c == '\\';
}

// Takes the first component off the rest; empty when none is left.
std::string_view next_component(std::string_view &rest) {
  while (!rest.empty() && is_separator(rest.front())) {
    rest.remove_prefix(1);
  }
  std::size_t length = 0;
  while (length < rest.size() && !is_separator(rest[length])) {
    ++length;
  }
  const std::string_view component(rest.data(), length);
  rest.remove_prefix(length);
  return component;
}

}  // namespace

int32_t CreatePath(const char *path) {
  const Path given(zorvcrt::view_of(path));
  std::string_view rest = given.view();
  std::string_view component = next_component(rest);
  if (component.empty()) return -1;

  Path built(is_separator(given.view().front()) ? "/" : "");
  for (;;) {
    built.append(component);
    if (const int error = zorvcrt::make_directory_if_missing(built.c_str()); error != 0) return error;
    component = next_component(rest);
    if (component.empty()) return 0;
    built.append('/');
  }
}
