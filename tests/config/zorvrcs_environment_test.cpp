// What a load puts into the process environment: the export of all settings and the block size.
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;

class SettingsEnvironment : public SettingsTest {
 protected:
  // The block size that a file with the line leads to.
  std::string block_size(const std::string &line) {
    ::clearenv();
    prepare(line);
    QuorConfCreate();
    EXPECT_EQ(stored("QUOR_BLOCK_SIZE"), variable("QUOR_BLOCK_SIZE")) << line;
    return query("QUOR_BLOCK_SIZE");
  }
};

TEST_F(SettingsEnvironment, ExportsAllLevels) {
  load("[PRIVILEGED]\nP=1\n[NONPRIVILEGED]\nN=2\n");
  EXPECT_EQ(variable("P"), "1");
  EXPECT_EQ(variable("N"), "2");
}

TEST_F(SettingsEnvironment, ExportsTheExpandedValue) {
  load("A=1\nB=<$A>\n");
  EXPECT_EQ(variable("B"), "<1>");
}

TEST_F(SettingsEnvironment, ExportsTheValueOfTheHighestLevel) {
  load("[PRIVILEGED]\nA=low\n[NONPRIVILEGED]\nA=high\n");
  EXPECT_EQ(variable("A"), "high");
}

TEST_F(SettingsEnvironment, NeverOverwritesAVariable) {
  ::setenv("A", "before", 1);
  ::setenv("B", "", 1);
  prepare("A=1\nB=2\n");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1"), nonprivileged("B", "2")}));
  EXPECT_EQ(variable("A"), "before");
  EXPECT_EQ(variable("B"), "");
}

TEST_F(SettingsEnvironment, ExportsFromTheHighestLevelDownAndFromTheLastSettingToTheFirst) {
  load("[PRIVILEGED]\nA=1\nB=2\n[NONPRIVILEGED]\nC=3\nD=4\n");
  std::string order;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    if ((*entry)[1] == '=') order.push_back(**entry);
  }
  EXPECT_EQ(order, "DCBA");
}

TEST_F(SettingsEnvironment, KeepsTheVariablesThatWereThere) {
  for (int i = 0; i < 100; ++i) {
    ::setenv(("OLD" + std::to_string(i)).c_str(), "old", 1);
  }
  prepare("A=1\nOLD50=new\nB=2\n");
  QuorConfCreate();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(variable(("OLD" + std::to_string(i)).c_str()), "old");
  }
  EXPECT_EQ(variable("A") + variable("B"), "12");
  ::setenv("A", "changed", 1);
  ::setenv("C", "added", 1);
  ::unsetenv("B");
  EXPECT_EQ(variable("A"), "changed");
  EXPECT_EQ(variable("B"), "(unset)");
  EXPECT_EQ(variable("C"), "added");
}

TEST_F(SettingsEnvironment, ExportsThousandsOfSettings) {
  std::string text = "[PRIVILEGED]\nN7=low\nP=1\n[NONPRIVILEGED]\n";
  for (int i = 0; i < 3000; ++i) {
    text += "N" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  }
  load(text);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(variable(("N" + std::to_string(i)).c_str()), std::to_string(i));
  }
  EXPECT_EQ(variable("P"), "1");
  std::set<std::string_view> names;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string_view name(*entry, std::string_view(*entry).find('='));
    EXPECT_TRUE(names.insert(name).second) << name << " occurs twice";
  }
}

TEST_F(SettingsEnvironment, CopesWithAnEnvironmentOfTheHostsOwnMaking) {
  for (int variables = 0; variables < 3; ++variables) {
    prepare("A=1\nB=2\nC=3\n");
    std::string developer = "__KERNEL_DEVELOPER=" + path("developer.conf");
    std::string known = "B=known";
    char *own[] = {developer.data(), variables > 0 ? known.data() : nullptr, nullptr};
    environ = own;
    QuorConfCreate();
    EXPECT_NE(environ, own);
    EXPECT_EQ(variable("A") + variable("C"), "13");
    EXPECT_EQ(variable("B"), variables > 0 ? "known" : "2");
    ::clearenv();
  }
}

TEST_F(SettingsEnvironment, PassesOverNamesThatTheEnvironmentRefuses) {
  load("=1\nA=2\n");
  EXPECT_EQ(variable("A"), "2");
}

TEST_F(SettingsEnvironment, ExportsNothingWhenToldSo) {
  for (const char *value : {"", "0", "1"}) {
    ::clearenv();
    ::setenv("__QUORCONF_NOENV", value, 1);
    prepare("A=1\nB=2\n");
    EXPECT_EQ(query("A"), "1");
    QuorConfUpdate("A", "2");
    QuorConfUpdate("C", "3");
    ::setenv("B", "environment", 1);
    QuorConfUpdate("B", nullptr);
    EXPECT_EQ(entries(), Entries({nonprivileged("A", "2"), nonprivileged("C", "3")}));
    EXPECT_EQ(variable("A"), "(unset)");
    EXPECT_EQ(variable("C"), "(unset)");
    EXPECT_EQ(variable("B"), "environment");
    EXPECT_EQ(variable("QUOR_BLOCK_SIZE"), "(unset)");
    EXPECT_EQ(variable("QUOR_HOME"), "(unset)");
    EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "2048");
    QuorConfSetPath(path("developer.conf").c_str());
    EXPECT_EQ(variable("A"), "(unset)");
    QuorConfSetPath(nullptr);
  }
}

TEST_F(SettingsEnvironment, ASettingThatForbidsTheExportEndsIt) {
  load("A=1\n__QUORCONF_NOENV=1\nB=2\n");
  EXPECT_EQ(variable("B"), "2");  // exported from the last one to the first
  EXPECT_EQ(variable("__QUORCONF_NOENV"), "1");
  EXPECT_EQ(variable("A"), "(unset)");
  EXPECT_EQ(variable("QUOR_BLOCK_SIZE"), "(unset)");
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "2048");
}

struct BlockSizeCase {
  const char *line;
  const char *expected;
};

constexpr BlockSizeCase kBlockSizes[] = {
    {"", "2048"},
    {"QUOR_BLOCK_SIZE=2048\n", "2048"},
    {"QUOR_BLOCK_SIZE=2049\n", "4096"},
    {"QUOR_BLOCK_SIZE=3000\n", "4096"},
    {"QUOR_BLOCK_SIZE=4096\n", "4096"},
    {"QUOR_BLOCK_SIZE=1\n", "2048"},
    {"QUOR_BLOCK_SIZE=-5000\n", "2048"},
    {"QUOR_BLOCK_SIZE=abc\n", "2048"},
    {"QUOR_BLOCK_SIZE=0x2000\n", "2048"},
    {"QUOR_BLOCK_SIZE=4096k\n", "4096"},
    {"QUOR_BLOCK_SIZE=99999999999999999999999\n", "4096"},
    {"[PRIVILEGED]\nQUOR_BLOCK_SIZE=8192\n", "4096"},
    {"[PRIVILEGED]\nQUOR_BLOCK_SIZE=8192\n[NONPRIVILEGED]\nQUOR_BLOCK_SIZE=1024\n", "2048"},
};

TEST_F(SettingsEnvironment, SettlesTheBlockSizeTo2048Or4096) {
  for (const BlockSizeCase &row : kBlockSizes) {
    EXPECT_EQ(block_size(row.line), row.expected) << row.line;
  }
}

TEST_F(SettingsEnvironment, TakesTheBlockSizeFromTheEnvironmentFirstAndOverwritesIt) {
  ::setenv("QUOR_BLOCK_SIZE", "3000", 1);
  prepare("QUOR_BLOCK_SIZE=1024\n");
  EXPECT_EQ(query("QUOR_BLOCK_SIZE"), "4096");
  EXPECT_EQ(variable("QUOR_BLOCK_SIZE"), "4096");
  EXPECT_EQ(stored("QUOR_BLOCK_SIZE"), "4096");
}

TEST_F(SettingsEnvironment, KeepsThePrivilegedBlockSizeAsItIs) {
  prepare("[PRIVILEGED]\nQUOR_BLOCK_SIZE=8192\n");
  EXPECT_EQ(query("QUOR_BLOCK_SIZE", 1), "8192");
}

TEST_F(SettingsEnvironment, AddsTheBlockSizeAtTheEnd) {
  prepare("A=1\n");
  EXPECT_EQ(all_entries().back(), nonprivileged("QUOR_BLOCK_SIZE", "2048"));
}

}  // namespace
