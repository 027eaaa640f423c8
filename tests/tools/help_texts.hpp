// What the --help texts of the companion command say, for the tests that hold other descriptions to them.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "run.hpp"

namespace help_texts {

inline std::set<std::string> matches(const std::string &text, const char *pattern) {
  const std::regex expression(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

inline std::set<std::string> commands() {
  const auto names = matches(support::run_zorvcrt({"--help"}).output, "\n  ([a-z0-9]+) ");
  EXPECT_GE(names.size(), 15U);
  return names;
}

/// Long names and letters, --help and -h left out.
inline std::set<std::string> options(const std::string &command) {
  const std::string help = support::run_zorvcrt({command, "--help"}).output;
  const std::size_t table = help.find("\noptions:\n");
  EXPECT_NE(table, std::string::npos) << help;
  auto names = matches(help.substr(table, help.find("\n\n", table) - table), "[\n ,] ?(--?[a-z]+)\\b");
  EXPECT_EQ(names.erase("--help") + names.erase("-h"), 2U);
  return names;
}

}  // namespace help_texts
