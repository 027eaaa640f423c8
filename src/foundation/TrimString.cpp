// In-place removal of surrounding white space.
#include "TrimString.h"

#include <cstring>

#include "whitespace.hpp"

void TrimString(char *string) {
  if (string == nullptr) return;
  const std::string_view kept = zorvcrt::trimmed(string);
  std::memmove(string, kept.data(), kept.size());
  string[kept.size()] = '\0';
}
