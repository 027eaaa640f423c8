// Cutting a command line into words against the rules said again over strings.
#include <vector>

#include "check.hpp"
#include "command_line.hpp"
#include "input.hpp"

namespace {

struct Words {
  std::vector<std::string> list;
  bool quote_is_open = false;
};

Words plain_words(const std::string &line) {
  Words words;
  std::size_t at = 0;
  while (words.list.size() < 128) {
    at = line.find_first_not_of(" \t", at);
    if (at == std::string::npos) break;
    const bool quoted = line[at] == '"' || line[at] == '\'';
    const char end_mark = quoted ? line[at] : ' ';
    if (quoted) ++at;
    const std::size_t end = line.find(end_mark, at);
    words.list.push_back(line.substr(at, end - at));
    words.quote_is_open = quoted && end == std::string::npos;
    if (end == std::string::npos) break;
    at = end + 1;
  }
  return words;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string line = fuzz::c_text({reinterpret_cast<const char *>(data), size});
  const auto copy = fuzz::exact_copy(line.c_str(), line.size() + 1);
  zorvcrt::CommandWords words;
  zorvcrt::split_command_line(copy.get(), words);

  const Words expected = plain_words(line);
  const std::vector<std::string> list(words.vector.begin(), words.vector.begin() + words.count);
  fuzz::check_equal(list, expected.list, "words");
  fuzz::check_equal(words.quote_is_open, expected.quote_is_open, "whether a quote is open");
  fuzz::check(words.vector[words.count] == nullptr, "the list ends with null");
  return 0;
}
