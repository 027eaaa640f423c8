// Running a program and looking at what it printed and how it ended.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace support {

struct Outcome {
  int status = -1;  // the exit status, or 128 + the signal that ended the program
  std::string output;
  std::string errors;
};

using Variables = std::vector<std::pair<std::string, std::string>>;

/// Runs words[0] with the other words as arguments, the text on standard input and the variables added to the
/// environment, and waits for its end.
Outcome run(const std::vector<std::string> &words, const std::string &input = "",
            const Variables &variables = {});

/// Runs the companion command with the words behind its name.
Outcome run_zorvcrt(std::vector<std::string> words, const std::string &input = "",
                    const Variables &variables = {});

}  // namespace support
