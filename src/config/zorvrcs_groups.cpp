// Group membership by the supplementary groups of the process.
#include "zorvrcs_groups.hpp"

#include <grp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <span>

#include "fixed_text.hpp"
#include "handles.hpp"
#include "whitespace.hpp"

namespace zorvcrt::settings {

namespace {

// As many groups as the kernel lets a process have.
constexpr std::size_t kGroupLimit = 65536;

// A header is never longer than a line of the file.
constexpr std::size_t kNameSize = 2048;

bool is_separator(char c) {
  return c == ',' || is_space(c);
}

// Takes the first name away and returns it; empty when none is left.
std::string_view next_name(std::string_view &names) {
  const auto *start = std::find_if_not(names.begin(), names.end(), is_separator);
  const auto *end = std::find_if(start, names.end(), is_separator);
  names.remove_prefix(static_cast<std::size_t>(end - names.begin()));
  return {start, static_cast<std::size_t>(end - start)};
}

bool is_group_among(std::string_view name, std::span<const gid_t> groups) {
  const struct group *entry = ::getgrnam(FixedText<kNameSize>(name).c_str());
  return entry != nullptr && std::find(groups.begin(), groups.end(), entry->gr_gid) != groups.end();
}

}  // namespace

bool is_member_of_any(std::string_view names) {
  const UniqueMalloc<gid_t> area(static_cast<gid_t *>(std::malloc(kGroupLimit * sizeof(gid_t))));
  if (area == nullptr) return false;
  const int count = ::getgroups(kGroupLimit, area.get());
  if (count < 0) return false;
  const std::span<const gid_t> groups(area.get(), static_cast<std::size_t>(count));
  for (std::string_view name = next_name(names); !name.empty(); name = next_name(names)) {
    if (is_group_among(name, groups)) return true;
  }
  return false;
}

}  // namespace zorvcrt::settings
