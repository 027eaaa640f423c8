// The exported functions over the settings tree, one by one.
#include <atomic>
#include <climits>
#include <string>
#include <thread>
#include <vector>

#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;

class QuorConf : public SettingsTest {};

constexpr char kThreeLevels[] = "[PRIVILEGED]\nA=p\nB=p\n[NONPRIVILEGED]\nA=n\nC=n\n";

TEST_F(QuorConf, CreateLoadsOnceAndReturnsZero) {
  prepare("A=1\n");
  EXPECT_EQ(QuorConfCreate(), 0);
  EXPECT_EQ(stored("A"), "1");
  support::write_file(path("developer.conf"), "A=2\n");
  EXPECT_EQ(QuorConfCreate(), 0);
  EXPECT_EQ(QuorConfExists(), 1);
  EXPECT_EQ(stored("A"), "1");
}

TEST_F(QuorConf, ExistsLoadsWithExportAndBlockSize) {
  prepare("A=1\n");
  EXPECT_EQ(QuorConfExists(), 1);
  EXPECT_EQ(variable("A"), "1");
  EXPECT_EQ(variable("QUOR_BLOCK_SIZE"), "2048");
}

TEST_F(QuorConf, QueryPrefersTheEnvironmentWhenTheMaskHasTheNonPrivilegedLevel) {
  prepare(kThreeLevels);
  QuorConfCreate();
  ::setenv("A", "e", 1);
  EXPECT_EQ(query("A", 7), "e");
  EXPECT_EQ(query("A", 4), "e");
  EXPECT_EQ(query("A", 1), "p");
  EXPECT_EQ(query("A", 3), "p");
}

TEST_F(QuorConf, QueryLetsTheHighestLevelOfTheMaskWin) {
  ::setenv("__QUORCONF_NOENV", "", 1);
  prepare(kThreeLevels);
  EXPECT_EQ(query("A", 7), "n");
  EXPECT_EQ(query("A", 1 | 4), "n");
  EXPECT_EQ(query("A", 1), "p");
  EXPECT_EQ(query("B", 7), "p");
  EXPECT_EQ(query("C", 4), "n");
}

TEST_F(QuorConf, QueryAnswersNullForWhatTheMaskLeavesOut) {
  prepare(kThreeLevels);
  EXPECT_EQ(query("C", 1), "(none)");
  EXPECT_EQ(query("A", 2), "(none)");
  EXPECT_EQ(query("A", 0), "(none)");
  EXPECT_EQ(query("A", 8), "(none)");
  EXPECT_EQ(query("a", 1), "(none)");
  EXPECT_EQ(query("", 7), "(none)");
}

TEST_F(QuorConf, QueryIgnoresBitsThatAreNoLevel) {
  prepare(kThreeLevels);
  EXPECT_EQ(query("A", 1 | 8), "p");
  EXPECT_EQ(query("A", INT32_MIN | 1), "p");
}

TEST_F(QuorConf, QueryOfNullGivesNullAndLoadsNothing) {
  prepare("A=1\n");
  EXPECT_EQ(QuorConfQuery(nullptr, 7), nullptr);
  EXPECT_EQ(variable("A"), "(unset)");
}

TEST_F(QuorConf, QueryFindsEveryOneOfThousandsOfNames) {
  std::string text = "[PRIVILEGED]\n";
  for (int i = 0; i < 5000; ++i) {
    text += "N" + std::to_string(i) + "=" + std::to_string(2 * i) + "\n";
    if (i % 2 == 0) text += "N" + std::to_string(i / 2) + "=\n";
  }
  ::setenv("__QUORCONF_NOENV", "", 1);
  prepare(text);
  for (int i = 0; i < 5000; ++i) {
    const std::string expected = i < 2500 ? "(none)" : std::to_string(2 * i);
    ASSERT_EQ(query(("N" + std::to_string(i)).c_str(), 1), expected);
  }
}

TEST_F(QuorConf, QueryMayRunOnManyThreadsAfterTheLoad) {
  prepare(kThreeLevels);
  QuorConfCreate();
  std::atomic<int> right = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&right] {
      for (int round = 0; round < 500; ++round) {
        right += query("A", 1) == "p" && query("A", 7) == "n" && query("X", 7) == "(none)" ? 1 : 0;
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(right, 2000);
}

TEST_F(QuorConf, UpdateStoresTheExpandedValueAndExportsItAsGiven) {
  prepare("A=1\n");
  QuorConfUpdate("B", "<$A>");
  EXPECT_EQ(stored("B"), "<1>");
  EXPECT_EQ(variable("B"), "<$A>");
  EXPECT_EQ(query("B", 7), "<$A>");
}

TEST_F(QuorConf, UpdateReplacesInTheTreeAndInTheEnvironment) {
  prepare("A=1\nB=2\n");
  QuorConfUpdate("A", "3");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "3"), nonprivileged("B", "2")}));
  EXPECT_EQ(variable("A"), "3");
}

TEST_F(QuorConf, UpdateTrimsTheNameOnBothSidesAndTheValueInFront) {
  prepare("");
  QuorConfUpdate(" \tA\n ", " \n x \t");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "x \t")}));
  EXPECT_EQ(variable("A"), "x \t");
}

TEST_F(QuorConf, UpdateRemovesByNullOrAnEmptyValueAndSetsTheVariableToNothing) {
  for (const char *nothing : {static_cast<const char *>(nullptr), ""}) {
    prepare("A=1\nB=2\n");
    QuorConfUpdate(" A ", nothing);
    EXPECT_EQ(entries(), Entries({nonprivileged("B", "2")}));
    EXPECT_EQ(variable("A"), "");
    EXPECT_EQ(query("A", 7), "");
    ::unsetenv("A");
  }
}

TEST_F(QuorConf, UpdateLeavesTheEnvironmentAloneWhenThereIsNothingToRemove) {
  prepare("[PRIVILEGED]\nP=1\n");
  QuorConfUpdate("X", "");
  EXPECT_EQ(variable("X"), "(unset)");
  ::setenv("X", "environment", 1);
  QuorConfUpdate("X", nullptr);
  EXPECT_EQ(variable("X"), "environment");
  QuorConfUpdate("P", "");
  EXPECT_EQ(variable("P"), "1");
  EXPECT_EQ(entries(), Entries({privileged("P", "1")}));
}

TEST_F(QuorConf, UpdateByAnEmptyExpansionRemovesFromTheTreeAndStillExports) {
  prepare("A=1\n");
  QuorConfUpdate("A", "$UNDEFINED");
  EXPECT_EQ(entries(), Entries());
  EXPECT_EQ(variable("A"), "$UNDEFINED");
}

TEST_F(QuorConf, UpdateByWhiteSpaceRemovesAndSetsTheVariableToNothing) {
  prepare("A=1\n");
  QuorConfUpdate("A", "  \t");
  EXPECT_EQ(entries(), Entries());
  EXPECT_EQ(variable("A"), "");
}

TEST_F(QuorConf, UpdateChangesNothingButTheNonPrivilegedLevel) {
  prepare("[PRIVILEGED]\nA=1\n");
  QuorConfUpdate("A", "2");
  EXPECT_EQ(entries(), Entries({privileged("A", "1"), nonprivileged("A", "2")}));
}

TEST_F(QuorConf, UpdateCutsTheTreesValueAt1023BytesAndNotTheVariable) {
  prepare("");
  const std::string value(5000, 'v');
  QuorConfUpdate("A", value.c_str());
  EXPECT_EQ(stored("A"), std::string(1023, 'v'));
  EXPECT_EQ(variable("A"), value);
}

TEST_F(QuorConf, UpdateKeepsInTheTreeWhatTheEnvironmentRefuses) {
  prepare("");
  QuorConfUpdate("", "1");
  QuorConfUpdate("A=B", "2");
  EXPECT_EQ(entries(), Entries({nonprivileged("", "1"), nonprivileged("A=B", "2")}));
  EXPECT_EQ(variable("A"), "(unset)");
}

TEST_F(QuorConf, UpdateOfNullChangesNothing) {
  prepare("A=1\n");
  QuorConfUpdate(nullptr, "1");
  QuorConfUpdate(nullptr, nullptr);
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1")}));
}

TEST_F(QuorConf, UpdateLoadsWhenNeeded) {
  prepare("A=1\n");
  QuorConfUpdate("B", "2");
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1"), nonprivileged("B", "2")}));
}

TEST_F(QuorConf, UpdateTakesTextsOfTheTreeAndOfTheEnvironment) {
  for (const char *no_export : {static_cast<const char *>(nullptr), "1"}) {
    ::clearenv();
    if (no_export != nullptr) ::setenv("__QUORCONF_NOENV", no_export, 1);
    prepare("A=" + std::string(500, 'a') + "\nB=2\n");
    QuorConfUpdate("A", QuorConfQuery("A", 7));
    EXPECT_EQ(stored("A"), std::string(500, 'a'));
    QuorConfUpdate("A", QuorConfQuery("A", 7) + 400);
    EXPECT_EQ(stored("A"), std::string(100, 'a'));

    QuorConfStart();
    const char *value = nullptr;
    const char *name = QuorConfNext(nullptr, &value);
    while (name != nullptr && std::string_view(name) != "A") {
      name = QuorConfNext(nullptr, &value);
    }
    QuorConfUpdate(name, value);
    QuorConfUpdate(name, nullptr);
    EXPECT_EQ(entries(), Entries({nonprivileged("B", "2")}));
    ::unsetenv("A");
  }
}

TEST_F(QuorConf, RemoveForgetsTheTreeSoThatTheNextReadingLoadsAgain) {
  prepare("A=1\n");
  EXPECT_EQ(stored("A"), "1");
  QuorConfRemove();
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  support::write_file(path("developer.conf"), "A=2\n");
  EXPECT_EQ(stored("A"), "2");
  EXPECT_EQ(variable("A"), "1");  // exported by the first load, and never overwritten by an export
  QuorConfRemove();
  QuorConfRemove();
}

TEST_F(QuorConf, UnloadForgetsTheTree) {
  prepare("A=1\n");
  EXPECT_EQ(stored("A"), "1");
  unload_zorvrcs();
  support::write_file(path("developer.conf"), "A=2\n");
  EXPECT_EQ(stored("A"), "2");
}

TEST_F(QuorConf, StartTellsWhetherThereIsASetting) {
  ::setenv("__KERNEL_DEVELOPER", "relative", 1);
  EXPECT_EQ(QuorConfExists(), 0);
  QuorConfUpdate("QUOR_HOME", nullptr);
  EXPECT_EQ(QuorConfStart(), nullptr);
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  QuorConfUpdate("A", "1");
  EXPECT_NE(QuorConfStart(), nullptr);
}

TEST_F(QuorConf, StartPassesEmptyLevels) {
  prepare("[PRIVILEGED]\n[NONPRIVILEGED]\nA=1\n");
  EXPECT_NE(QuorConfStart(), nullptr);
  EXPECT_EQ(entries(), Entries({nonprivileged("A", "1")}));
}

TEST_F(QuorConf, NextVisitsLevelsInAscendingAndSettingsInFileOrder) {
  prepare("Z=1\nY=2\n[PRIVILEGED]\nX=3\nA=4\n");
  EXPECT_EQ(entries(), Entries({privileged("X", "3"), privileged("A", "4"), nonprivileged("Z", "1"),
                                nonprivileged("Y", "2")}));
}

TEST_F(QuorConf, NextGivesNullBeforeTheFirstStart) {
  prepare("A=1\n");
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  EXPECT_EQ(QuorConfCreate(), 0);
  int32_t level = -1;
  const char *value = "untouched";
  EXPECT_EQ(QuorConfNext(&level, &value), nullptr);
  EXPECT_EQ(level, -1);
  EXPECT_STREQ(value, "untouched");
}

TEST_F(QuorConf, NextKeepsGivingNullAtTheEndUntilTheNextStart) {
  prepare("A=1\n");
  all_entries();
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  QuorConfUpdate("B", "2");
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  QuorConfStart();
  EXPECT_NE(QuorConfNext(nullptr, nullptr), nullptr);
}

TEST_F(QuorConf, NextToleratesNullAreas) {
  prepare("[PRIVILEGED]\nA=1\nB=2\nC=3\n");
  QuorConfStart();
  int32_t level = 0;
  const char *value = nullptr;
  EXPECT_STREQ(QuorConfNext(nullptr, nullptr), "A");
  EXPECT_STREQ(QuorConfNext(&level, nullptr), "B");
  EXPECT_STREQ(QuorConfNext(nullptr, &value), "C");
  EXPECT_EQ(level, 1);
  EXPECT_STREQ(value, "3");
}

TEST_F(QuorConf, NextSurvivesEveryChangeDuringTheWalk) {
  prepare("A=1\nB=2\nC=3\nD=4\n");
  std::string seen;
  QuorConfStart();
  while (const char *next = QuorConfNext(nullptr, nullptr)) {
    const std::string name = next;
    if (name.size() == 1) seen += name;
    if (name == "A") QuorConfUpdate("B", nullptr);  // the one at the cursor
    if (name == "C") QuorConfUpdate("C", nullptr);  // the one behind the cursor
    if (name == "D") QuorConfUpdate("E", "5");
  }
  EXPECT_EQ(seen, "ACDE");
  QuorConfStart();
  QuorConfRemove();
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  EXPECT_EQ(QuorConfCreate(), 0);
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
}

TEST_F(QuorConf, NextSurvivesTheRemovalOfAllSettings) {
  prepare("A=1\nB=2\n");
  QuorConfStart();
  for (const char *name : {"A", "B", "QUOR_HOME", "QUOR_BLOCK_SIZE"}) {
    QuorConfUpdate(name, nullptr);
  }
  EXPECT_EQ(QuorConfNext(nullptr, nullptr), nullptr);
  EXPECT_EQ(QuorConfStart(), nullptr);
}

std::string printed() {
  support::CapturedDescriptor output(1);
  QuorConfPrint();
  return output.text();
}

TEST_F(QuorConf, PrintShowsTheTreeWithTheEnvironmentOverAllButThePrivilegedLevel) {
  QuorConfSetPath(path("none").c_str());  // without QUOR_HOME and block size
  prepare("A=1\nB=2\n[PRIVILEGED]\nA=p\nP=q\n");
  QuorConfCreate();
  ::setenv("A", "environment", 1);
  ::setenv("P", "environment", 1);
  QuorConfUpdate("QUOR_BLOCK_SIZE", nullptr);
  EXPECT_EQ(printed(),
            "Table level : Privileged\n\tA\tp\n\tP\tq\n"
            "Table level : Non-privileged\n\tA\tenvironment\n\tB\t2\n");
}

TEST_F(QuorConf, PrintShowsLevelsThatHaveNoSettings) {
  QuorConfSetPath(path("none").c_str());
  prepare("[PRIVILEGED]\n");
  EXPECT_EQ(printed(),
            "Table level : Privileged\n"
            "Table level : Non-privileged\n\tQUOR_BLOCK_SIZE\t2048\n");
}

TEST_F(QuorConf, LoadingPrintsNothing) {
  support::CapturedDescriptor output(1);
  support::CapturedDescriptor errors(2);
  prepare("[GROUP:unknown]\nA\n[X]\n=\n$\n");
  QuorConfCreate();
  QuorConfUpdate("=", "1");
  EXPECT_EQ(output.text(), "");
  EXPECT_EQ(errors.text(), "");
}

TEST_F(QuorConf, LeavesNoDescriptorOpen) {
  const int before = support::open_descriptors();
  prepare("[PRIVILEGED]\nQUOR_CONF_DIR=" + path("") + "\n");
  QuorConfCreate();
  EXPECT_EQ(support::open_descriptors(), before);
}

}  // namespace
