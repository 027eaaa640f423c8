// Reading the lines of a settings file: comments, headers that choose the level, and NAME=value.
#include "zorvrcs_reader.hpp"

#include <array>
#include <cctype>
#include <string_view>

#include "whitespace.hpp"
#include "zorvrcs_expand.hpp"
#include "zorvrcs_groups.hpp"

namespace zorvcrt::settings {

namespace {

// A longer line is handled in pieces, each as a line of its own.
constexpr std::size_t kLineSize = 2048;

// The level of a group section that is not for us: no mask has it, so its lines are dropped.
constexpr int32_t kForeignGroup = 0;

constexpr std::string_view kPrivileged = "PRIVILEGED";
constexpr std::string_view kNonPrivileged = "NONPRIVILEGED";
constexpr std::string_view kGroup = "GROUP";

std::string_view before(std::string_view text, std::size_t position) {
  return {text.data(), position};
}

std::string_view behind(std::string_view text, std::size_t position) {
  text.remove_prefix(position + 1);
  return text;
}

// Tells whether the text begins with the word, which is in upper case, whatever the case of the text.
bool begins_with_word(std::string_view text, std::string_view word) {
  if (text.size() < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(text[i])) != word[i]) return false;
  }
  return true;
}

bool is_word(std::string_view text, std::string_view word) {
  return text.size() == word.size() && begins_with_word(text, word);
}

class Reader {
 public:
  Reader(int32_t mask, Tree &tree) : tree_(tree), mask_(mask) {}

  void read_line(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    line = trimmed_front(line);
    if (line.empty() || line.front() == '#') return;
    if (line.front() == '[') {
      read_header(behind(line, 0));
    } else {
      read_item(line);
    }
  }

 private:
  // The text is what follows the '['. An unknown header leaves the level as it is, so the lines below it
  // count under the header before: a promise to files that carry sections of other programs.
  void read_header(std::string_view text) {
    const std::size_t stop = text.find_first_of("]:");
    if (stop == std::string_view::npos) return;
    const std::string_view word = before(text, stop);
    if (text[stop] == ':') {
      if (begins_with_word(word, kGroup)) read_group_list(behind(text, stop));
    } else if (is_word(word, kPrivileged)) {
      enter(QUOR_LEVEL_PRIVILEGED);
    } else if (is_word(word, kNonPrivileged)) {
      enter(QUOR_LEVEL_NONPRIVILEGED);
    }
  }

  void read_group_list(std::string_view text) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) return;
    enter(is_member_of_any(before(text, end)) ? QUOR_LEVEL_GROUP : kForeignGroup);
  }

  void enter(int32_t level) {
    level_ = level;
    if (is_kept()) tree_.establish(level);
  }

  void read_item(std::string_view line) {
    if (!is_kept()) return;
    if (const std::size_t comment = line.find('#'); comment != std::string_view::npos) {
      line = trimmed_back(before(line, comment));
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    store_expanded(tree_, level_, trimmed_back(before(line, equals)), trimmed_front(behind(line, equals)));
  }

  [[nodiscard]] bool is_kept() const { return (level_ & mask_) != 0; }

  Tree &tree_;
  int32_t mask_;
  int32_t level_ = QUOR_LEVEL_NONPRIVILEGED;
};

}  // namespace

void read_settings(FILE *file, int32_t mask, Tree &tree) {
  Reader reader(mask, tree);
  std::array<char, kLineSize> line;
  while (std::fgets(line.data(), kLineSize, file) != nullptr) {
    reader.read_line(line.data());
  }
}

}  // namespace zorvcrt::settings
