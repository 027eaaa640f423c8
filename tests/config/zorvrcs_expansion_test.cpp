// References to other settings inside values.
#include <string>

#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;

class SettingsExpansion : public SettingsTest {
 protected:
  // The value that a line gives R, with A=1, LONG_NAME2=long and the variable E in the environment.
  std::string expansion(const std::string &value) {
    ::clearenv();
    ::setenv("E", "from environment", 1);
    prepare("A=1\nLONG_NAME2=long\nR=" + value + "\n");
    return stored("R");
  }
};

struct ExpansionCase {
  const char *value;
  const char *expected;
};

constexpr ExpansionCase kExpansions[] = {
    {"$A", "1"},
    {"${A}", "1"},
    {"${A}x$A", "1x1"},
    {"x$A.y", "x1.y"},
    {"$LONG_NAME2/$LONG_NAME2", "long/long"},
    {"$A$A${A}${A}", "1111"},
    {"$E", "from environment"},
    {"[${E}]", "[from environment]"},
    {"x$UNDEFINED", "x"},
    {"x${UNDEFINED}y", "xy"},
    {"$a|", "|"},
    {"$AB|", "|"},
    // Not a reference: left as it is.
    {"$", "$"},
    {"x$", "x$"},
    {"$ A", "$ A"},
    {"$-", "$-"},
    {"${", "${"},
    {"${}", "${}"},
    {"${A", "${A"},
    {"${A-x}", "${A-x}"},
    {"${A }", "${A }"},
    // Reading goes on behind what was left.
    {"$$A", "$1"},
    {"$$$A$", "$$1$"},
    {"${A$A}", "${A1}"},
    {"${$A}", "${1}"},
    {"${A ${A}", "${A 1"},
    {"$}$A", "$}1"},
    {"${A}}", "1}"},
    {"$A}", "1}"},
};

TEST_F(SettingsExpansion, ReplacesReferencesAndLeavesTheRest) {
  for (const ExpansionCase &row : kExpansions) {
    EXPECT_EQ(expansion(row.value), row.expected) << row.value;
  }
}

TEST_F(SettingsExpansion, SeesTheTreeAsLoadedSoFar) {
  EXPECT_EQ(load("B=<$A>\nA=1\nC=<$A>\nA=2\nD=<$A>\n"),
            Entries({nonprivileged("B", "<>"), nonprivileged("A", "2"), nonprivileged("C", "<1>"),
                     nonprivileged("D", "<2>")}));
}

TEST_F(SettingsExpansion, LetsAValueReferToTheOneThatItReplaces) {
  EXPECT_EQ(load("P=/bin\nP=$P:/opt\n"), Entries({nonprivileged("P", "/bin:/opt")}));
}

TEST_F(SettingsExpansion, PrefersTheHighestLevelWhateverTheLevelOfTheLine) {
  EXPECT_EQ(load("A=high\n[PRIVILEGED]\nA=low\nB=$A\n"),
            Entries({privileged("A", "low"), privileged("B", "high"), nonprivileged("A", "high")}));
}

TEST_F(SettingsExpansion, FindsPrivilegedSettings) {
  EXPECT_EQ(load("[PRIVILEGED]\nA=1\n[NONPRIVILEGED]\nB=$A\n"),
            Entries({privileged("A", "1"), nonprivileged("B", "1")}));
}

TEST_F(SettingsExpansion, PrefersTheTreeToTheEnvironment) {
  ::setenv("A", "environment", 1);
  prepare("A=tree\nB=$A\n");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "tree"), nonprivileged("B", "tree")}));
}

TEST_F(SettingsExpansion, DoesNotLookAtInsertedValuesAgain) {
  ::setenv("E", "$A ${A} $", 1);
  prepare("A=1\nB=${E}A\n");
  EXPECT_EQ(stored("B"), "$A ${A} $A");
}

TEST_F(SettingsExpansion, AddsNothingForAnEmptyResult) {
  EXPECT_EQ(load("C=$UNDEFINED\nD=${UNDEFINED}$UNDEFINED\n"), Entries());
}

TEST_F(SettingsExpansion, CutsAnInsertedValueAtTheEndOfTheRoom) {
  const std::string prefix(1000, 'x');
  for (const std::size_t length : {22U, 23U, 24U, 1000U}) {
    ::setenv("E", std::string(length, 'e').c_str(), 1);
    prepare("A=" + prefix + "${E}\n");
    EXPECT_EQ(stored("A"), prefix + std::string(std::min<std::size_t>(length, 23), 'e')) << length;
  }
}

TEST_F(SettingsExpansion, TakesAnEnvironmentVariableOfAnyLength) {
  ::setenv("E", std::string(100000, 'e').c_str(), 1);
  prepare("A=$E\n");
  EXPECT_EQ(stored("A"), std::string(1023, 'e'));
}

// The room is that of the text with its insertions so far: what an insertion pushes over the end is lost.
TEST_F(SettingsExpansion, LosesTheEndThatAnInsertionPushesOut) {
  ::setenv("E", "0123456789", 1);  // 8 bytes longer than "$E"
  const std::string middle(1018, '.');
  prepare("A=$E" + middle + "yz\n");  // 1022 bytes
  EXPECT_EQ(stored("A"), "0123456789" + std::string(1013, '.'));
}

TEST_F(SettingsExpansion, CutsAReferenceThatAnInsertionPushesOverTheEnd) {
  ::setenv("E", "0123456789", 1);
  ::setenv("N", "n", 1);
  ::setenv("NA", "na", 1);
  // "$E", 1011 bytes, "$NAME": the insertion leaves "$N", "$NA" or the like of the last reference.
  const std::string filler(1010, '.');
  prepare("A=$E" + filler + ".$NAME\nB=$E" + filler + "$NAME\nC=$E" + filler + "${NA}\n");
  EXPECT_EQ(stored("A"), "0123456789" + filler + ".n");
  EXPECT_EQ(stored("B"), "0123456789" + filler + "na");
  EXPECT_EQ(stored("C"), "0123456789" + filler + "${N");
}

TEST_F(SettingsExpansion, CutsTheTextBeforeItExpands) {
  ::setenv("E", "", 1);
  const std::string filler(1020, '.');
  prepare("A=$E$E" + filler + "cut\n");  // the first 1023 bytes end within the filler
  EXPECT_EQ(stored("A"), std::string(1019, '.'));
}

TEST_F(SettingsExpansion, FindsNamesOfAnyLength) {
  const std::string name(1000, 'N');
  ::setenv(name.c_str(), "found", 1);
  prepare("A=<$" + name + ">\nB=<${" + name + "}>\n");
  EXPECT_EQ(stored("A"), "<found>");
  EXPECT_EQ(stored("B"), "<found>");
}

}  // namespace
