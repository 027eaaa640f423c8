// The library against a plain restatement of the file format, over random small files made of fragments that
// matter.
#include <random>
#include <string>
#include <vector>

#include "plain_settings.hpp"
#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;

const std::vector<std::string> kFragments = {"\n",
                                             "\n",
                                             "\n",
                                             "\n",
                                             "\n",
                                             "\r\n",
                                             "=",
                                             "=",
                                             "=",
                                             "=",
                                             " ",
                                             "\t",
                                             "\v",
                                             "#",
                                             "A",
                                             "B",
                                             "C",
                                             "a",
                                             "_",
                                             "1",
                                             "x",
                                             "\xE9",
                                             "$",
                                             "$A",
                                             "$B",
                                             "${A}",
                                             "${B}",
                                             "${",
                                             "}",
                                             "$E",
                                             "${E}",
                                             "$LONG",
                                             "$NONE",
                                             "[",
                                             "]",
                                             ":",
                                             "\n[PRIVILEGED]\n",
                                             "\n[nonPrivileged] x\n",
                                             "\n[NONPRIVILEGED]\n",
                                             "\n[Misc]\n",
                                             "\n[GROUP]\n",
                                             "\n[GROUP: , ]\n",
                                             "\n[groupies:]\n",
                                             "\n[PRIVILEGED:]\n",
                                             "\nA=",
                                             "\nB=",
                                             "\nA=1",
                                             "\nB=$A",
                                             "\nA=\n",
                                             std::string("\0", 1),
                                             std::string(200, ' '),
                                             std::string(500, 'y'),
                                             std::string(1000, 'z')};

TEST_F(SettingsTest, AgreesWithAPlainModelOnRandomFiles) {
  std::mt19937 random(20240229);
  std::uniform_int_distribution<std::size_t> fragment(0, kFragments.size() - 1);
  std::uniform_int_distribution<int> count(0, 60);
  for (int round = 0; round < 4000; ++round) {
    std::string file;
    for (int i = count(random); i > 0; --i) {
      file += kFragments[fragment(random)];
    }
    ::clearenv();
    ::setenv("__QUORCONF_NOENV", "", 1);
    ::setenv("E", "environment $A", 1);
    ::setenv("LONG", std::string(700, 'l').c_str(), 1);
    prepare(file);
    plain::Settings model;
    model.read(file);
    Entries expected;
    for (const auto &[level, name, value] : model.entries())
      expected.push_back({level, name, value});
    ASSERT_EQ(entries(), expected) << "round " << round << ":\n" << ::testing::PrintToString(file);
  }
}

}  // namespace
