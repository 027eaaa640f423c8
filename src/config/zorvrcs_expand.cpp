// Expansion of $NAME and ${NAME}, in one pass: inserted values are not looked at again.
#include "zorvrcs_expand.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace zorvcrt::settings {

namespace {

// What a '$' leads into.
struct Reference {
  std::string_view name;
  std::size_t length = 0;  // from the '$' up to where reading goes on
  bool is_complete = false;
};

bool is_name_character(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

Reference reference_at_front(std::string_view text) {
  const bool is_braced = text.size() > 1 && text[1] == '{';
  const std::size_t start = is_braced ? 2 : 1;
  std::size_t end = start;
  while (end < text.size() && is_name_character(text[end])) {
    ++end;
  }
  const bool is_closed = !is_braced || (end < text.size() && text[end] == '}');
  Reference reference;
  reference.name = {text.data() + start, end - start};
  reference.is_complete = is_closed && end > start;
  reference.length = reference.is_complete && is_braced ? end + 1 : end;
  return reference;
}

std::string_view value_of(std::string_view name, const Tree &tree) {
  if (const char *value = tree.find(name, QUOR_LEVEL_ALL); value != nullptr) return value;
  return view_of(std::getenv(Expansion(name).c_str()));
}

// Takes the text's first bytes away and returns them.
std::string_view take(std::string_view &text, std::size_t count) {
  const std::string_view taken(text.data(), std::min(count, text.size()));
  text.remove_prefix(taken.size());
  return taken;
}

}  // namespace

Expansion expanded(std::string_view text, const Tree &tree) {
  Expansion result;
  std::string_view rest = take(text, Expansion::capacity());
  while (!rest.empty()) {
    result.append(take(rest, rest.find('$')));
    if (rest.empty()) break;
    const Reference reference = reference_at_front(rest);
    const std::string_view source = take(rest, reference.length);
    result.append(reference.is_complete ? value_of(reference.name, tree) : source);
    // Result and rest share the room: what an insertion pushes over the end is gone before it is read, so
    // that a reference there is cut, too.
    rest = take(rest, Expansion::capacity() - result.size());
  }
  return result;
}

void store_expanded(Tree &tree, int32_t level, std::string_view name, std::string_view value) {
  tree.store(level, name, expanded(value, tree).view());
}

}  // namespace zorvcrt::settings
