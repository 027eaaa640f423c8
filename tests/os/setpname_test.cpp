#include "setpname.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "children.hpp"
#include "files.hpp"
#include "run.hpp"

namespace {

// The texts that the system laid down when this program started, kept before anybody rearranges the vector.
int program_argc = 0;
char *program_argv[64] = {};

__attribute__((constructor)) void keep_arguments(int argc, char **argv) {
  program_argc = std::min(argc, 63);
  std::copy_n(argv, program_argc, program_argv);
}

// Arguments and environment variables laid out in one block of exactly their size, with gaps where wanted.
// The process's environment is the laid-out one as long as this lives.
class Layout {
 public:
  struct Text {
    std::string text;
    std::size_t gap_before = 0;
  };

  Layout(const std::vector<Text> &arguments, const std::vector<Text> &variables) : saved_(environ) {
    std::size_t size = 0;
    for (const auto *texts : {&arguments, &variables}) {
      for (const Text &text : *texts) {
        size += text.gap_before + text.text.size() + 1;
      }
    }
    block_.assign(size, '#');
    block_.shrink_to_fit();
    char *at = block_.data();
    place(arguments, at, argv_);
    place(variables, at, variables_);
    environ = variables_.data();
  }
  ~Layout() { environ = saved_; }
  Layout(const Layout &) = delete;
  Layout &operator=(const Layout &) = delete;

  char *rename(const char *name) { return SetProcessName(name, argc(), argv_.data()); }
  [[nodiscard]] int32_t argc() const { return static_cast<int32_t>(argv_.size()) - 1; }
  [[nodiscard]] char *const *argv() const { return argv_.data(); }
  [[nodiscard]] std::string content() const { return {block_.begin(), block_.end()}; }

 private:
  static void place(const std::vector<Text> &texts, char *&at, std::vector<char *> &vector) {
    for (const Text &text : texts) {
      at += text.gap_before;
      vector.push_back(at);
      std::memcpy(at, text.text.c_str(), text.text.size() + 1);
      at += text.text.size() + 1;
    }
    vector.push_back(nullptr);
  }

  char **saved_;
  std::vector<char> block_;
  std::vector<char *> argv_;
  std::vector<char *> variables_;
};

std::string zeros(std::size_t count) {
  std::string text;
  text.assign(count, '\0');
  return text;
}

// What the block holds afterwards when the first `area` bytes of it belong to the name.
std::string renamed(std::string content, std::size_t area, const std::string &name) {
  const std::string kept = name.substr(0, area);
  return content.replace(0, area, kept + zeros(area - kept.size()));
}

TEST(SetProcessName, ReplacesTheFirstArgumentAloneWithANameThatFitsIt) {
  for (const std::string name : {"", "a", "abc", "abcd"}) {
    Layout layout({{"prog"}, {"-x"}}, {{"A=1"}});
    const std::string before = layout.content();
    char *first = layout.rename(name.c_str());
    EXPECT_EQ(first, layout.argv()[0]);
    EXPECT_EQ(first, name);
    EXPECT_EQ(layout.content(), renamed(before, 5, name));
  }
}

TEST(SetProcessName, TakesTheWholeContiguousAreaForALongerName) {
  Layout layout({{"prog"}, {"-x"}}, {{"A=1"}, {"B=2"}});
  EXPECT_STREQ(layout.rename("prog5"), "prog5");
  EXPECT_EQ(layout.content(), "prog5" + zeros(11));
}

TEST(SetProcessName, LeavesANameThatFillsTheAreaWithoutTerminator) {
  const std::string name = "0123456789abcdefgh";
  for (const std::size_t length : {15U, 16U, 17U}) {
    Layout layout({{"prog"}, {"-x"}}, {{"A=1"}, {"B=2"}});
    layout.rename(name.substr(0, length).c_str());
    EXPECT_EQ(layout.content(), renamed(zeros(16), 16, name.substr(0, length)));
  }
}

TEST(SetProcessName, StopsAtAGapBehindAnArgument) {
  Layout layout({{"prog"}, {"-x"}, {"y", 1}}, {{"A=1"}});
  const std::string before = layout.content();
  layout.rename("0123456789");
  EXPECT_EQ(layout.content(), renamed(before, 8, "0123456789"));
}

TEST(SetProcessName, LeavesTheEnvironmentAloneWhenItsFirstVariableIsNotANeighbour) {
  Layout layout({{"prog"}}, {{"A=1"}, {"B=2"}});
  const std::string before = layout.content();
  environ += 1;  // as after an unsetenv("A")
  layout.rename("0123456789");
  EXPECT_EQ(layout.content(), renamed(before, 5, "0123456789"));
}

TEST(SetProcessName, StopsAtAVariableThatWasReplaced) {
  Layout layout({{"prog"}}, {{"A=1"}, {"B=2"}, {"C=3"}});
  const std::string before = layout.content();
  char replaced[] = "B=other";
  environ[1] = replaced;
  layout.rename("0123456789abcdef");
  EXPECT_EQ(layout.content(), renamed(before, 9, "0123456789abcdef"));
  EXPECT_STREQ(replaced, "B=other");
}

TEST(SetProcessName, WorksWithoutAnyEnvironment) {
  char *no_variables[] = {nullptr};
  for (char **none : {static_cast<char **>(nullptr), static_cast<char **>(no_variables)}) {
    Layout layout({{"prog"}}, {{"A=1"}});
    const std::string before = layout.content();
    environ = none;
    layout.rename("0123456789");
    EXPECT_EQ(layout.content(), renamed(before, 5, "0123456789"));
  }
}

TEST(SetProcessName, LooksAtNoMoreArgumentsThanItIsTold) {
  for (const int32_t count : {1, 0, -1, INT32_MIN}) {
    Layout layout({{"prog"}, {"-x"}}, {});
    const std::string before = layout.content();
    SetProcessName("0123456789", count, layout.argv());
    EXPECT_EQ(layout.content(), renamed(before, 5, "0123456789"));
  }
}

TEST(SetProcessName, StopsAtTheEndOfTheVectorWhateverTheCount) {
  Layout layout({{"prog"}, {"-x"}}, {});
  SetProcessName("0123456789", INT32_MAX, layout.argv());
  EXPECT_EQ(layout.content(), "01234567");
}

TEST(SetProcessName, TakesANameThatIsOneOfTheArguments) {
  Layout layout({{"prog"}, {"new-name"}}, {});
  EXPECT_STREQ(layout.rename(layout.argv()[1]), "new-name");
  EXPECT_EQ(layout.content(), "new-name" + zeros(6));
}

TEST(SetProcessName, ToleratesNullEverywhere) {
  char *none[] = {nullptr};
  EXPECT_EQ(SetProcessName("name", 0, nullptr), nullptr);
  EXPECT_EQ(SetProcessName("name", 0, none), nullptr);
  Layout layout({{"prog"}}, {});
  EXPECT_STREQ(layout.rename(nullptr), "prog");
}

TEST(SetProcessName, AgreesWithAPlainModelOnRandomLayouts) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 20000; ++round) {
    std::vector<Layout::Text> texts[2];
    std::size_t area = 0;
    bool contiguous = true;
    for (int kind = 0; kind < 2; ++kind) {
      for (std::size_t count = random() % 4 + (kind == 0 ? 1 : 0); count != 0; --count) {
        const bool first = kind == 0 && texts[0].empty();
        const std::size_t gap = !first && random() % 4 == 0 ? 1 + random() % 3 : 0;
        texts[kind].push_back({std::string(random() % 6, 'a'), gap});
        // Behind a gap nothing is a neighbour any more, since the layout never comes back.
        contiguous = contiguous && gap == 0;
        if (contiguous) area += texts[kind].back().text.size() + 1;
      }
    }
    Layout layout(texts[0], texts[1]);
    const std::string name(random() % 40, 'n');
    const std::string before = layout.content();
    const std::size_t first = texts[0][0].text.size();
    layout.rename(name.c_str());
    ASSERT_EQ(layout.content(), renamed(before, name.size() <= first ? first + 1 : area, name));
  }
}

class ProcessListing : public children::ChildTest {
 protected:
  // The arguments as the system lists them for a child of this program that has given itself the name.
  static std::string listed(const std::string &name) {
    const children::Stream output;
    const pid_t child = ::fork();
    if (child == 0) {
      SetProcessName(name.c_str(), program_argc, program_argv);
      const int file = ::open("/proc/self/cmdline", O_RDONLY);
      char text[65536] = "";
      const ssize_t count = ::read(file, text, sizeof text);
      if (count > 0 && ::write(output.get(), text, static_cast<std::size_t>(count)) == count) ::_exit(0);
      ::_exit(1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return output.text().c_str();  // up to the first NUL
  }
};

TEST_F(ProcessListing, ShowsTheNewName) {
  EXPECT_EQ(listed("x"), "x");
  EXPECT_EQ(listed("zorv: waiting"), "zorv: waiting");
}

TEST_F(ProcessListing, ShowsANameThatNeedsTheRoomOfTheEnvironment) {
  std::size_t arguments = 0;
  for (int i = 0; i < program_argc; ++i) {
    arguments += std::strlen(program_argv[i]) + 1;
  }
  const char *end = program_argv[program_argc - 1] + std::strlen(program_argv[program_argc - 1]);
  ASSERT_EQ(environ[0], end + 1) << "the environment is not where the system put it";
  const std::string name(arguments + std::strlen(environ[0]) / 2, 'n');
  EXPECT_EQ(listed(name), name);
}

}  // namespace
