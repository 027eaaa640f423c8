#include <gtest/gtest.h>

#include <regex>

#include "files.hpp"
#include "help_texts.hpp"

namespace {

std::string manual() {
  const std::string page = support::read_file(ZORVCRT_SOURCE_DIR "/docs/man/zorvcrt.1");
  const std::size_t begin = page.find(".SH COMMANDS");
  const std::size_t end = page.find(".SH EXIT STATUS");
  EXPECT_NE(end, std::string::npos);
  return std::regex_replace(page.substr(begin, end - begin), std::regex("\\\\-"), "-");
}

// From the command's first heading up to that of another command.
std::string section_of(const std::string &page, const std::string &command) {
  std::string section;
  std::size_t at = page.find("\n.SS ");
  while (at != std::string::npos) {
    const std::size_t next = page.find("\n.SS ", at + 1);
    const std::string text = page.substr(at, next == std::string::npos ? next : next - at);
    if (std::regex_search(text, std::regex("^\n\\.SS " + command + "\\b"))) section += text;
    at = next;
  }
  return section;
}

TEST(ManualPage, DescribesEveryCommandAndNoOther) {
  EXPECT_EQ(help_texts::matches(manual(), "\n\\.SS ([a-z0-9]+)"), help_texts::commands());
}

TEST(ManualPage, DescribesTheOptionsOfEveryHelpTextAndNoOthers) {
  const std::string page = manual();
  for (const std::string &command : help_texts::commands()) {
    const std::string section = section_of(page, command);
    auto described = help_texts::matches(section, "\n\\.BR? (--?[a-z]+)");
    described.merge(help_texts::matches(section, "\n\\.BR -[a-z] \", \" (--[a-z]+)"));
    EXPECT_EQ(described, help_texts::options(command)) << command;
  }
}

TEST(ManualPage, NamesEveryChoiceOfAnOption) {
  const std::string page = manual();
  for (const std::string &command : help_texts::commands()) {
    const std::string help = support::run_zorvcrt({command, "--help"}).output;
    for (const std::string &choices : help_texts::matches(help, "\n +(--[a-z]+ [a-z0-9|]*\\|[a-z0-9]+)")) {
      const std::size_t blank = choices.find(' ');
      const std::string line = ".B " + choices.substr(0, blank) + " \\fR" + choices.substr(blank + 1) + "\n";
      EXPECT_NE(section_of(page, command).find(line), std::string::npos) << command << ": " << line;
    }
  }
}

}  // namespace
