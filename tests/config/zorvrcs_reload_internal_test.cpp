// A load that starts while there is a tree. The exported functions always forget the tree first, so the
// loader is called by its name.
#include "zorvrcs_fixture.hpp"
#include "zorvrcs_load.hpp"

namespace {

using namespace settings_test;
using zorvcrt::settings::Item;
using zorvcrt::settings::Section;
using zorvcrt::settings::Settings;

// Has a state of its own, beside that of the exported functions.
class SettingsReload : public SettingsTest {
 protected:
  void SetUp() override {
    SettingsTest::SetUp();
    own_.path_is_explicit = true;  // without QUOR_HOME
  }
  void TearDown() override {
    zorvcrt::settings::forget_tree(own_);
    zorvcrt::settings::forget_path(own_);
    SettingsTest::TearDown();
  }

  // Loads the text into the state that is there and tells what the tree holds then.
  Entries load_over(std::string_view text) {
    prepare(text);
    EXPECT_EQ(zorvcrt::settings::load(own_), 0);
    return own_entries();
  }

  [[nodiscard]] Entries own_entries() const {
    Entries all;
    for (const Section &section : own_.tree->sections()) {
      for (const Item *item = section.first(); item != nullptr; item = section.after(*item)) {
        all.push_back({section.level(), item->name.get(), item->value.get()});
      }
    }
    return all;
  }

  Settings own_;
};

TEST_F(SettingsReload, LetsThePreviousSettingsWinOverTheFiles) {
  EXPECT_EQ(load_over("A=1\nB=1\n[PRIVILEGED]\nP=1\n"),
            Entries({privileged("P", "1"), nonprivileged("A", "1"), nonprivileged("B", "1")}));
  EXPECT_EQ(load_over("C=2\nB=2\n[PRIVILEGED]\nP=2\nQ=2\n"),
            Entries({privileged("P", "1"), privileged("Q", "2"), nonprivileged("C", "2"),
                     nonprivileged("B", "1"), nonprivileged("A", "1")}));
}

TEST_F(SettingsReload, AddsThePreviousSettingsAtTheirOwnLevels) {
  load_over("[PRIVILEGED]\nA=1\n");
  EXPECT_EQ(load_over("A=2\n"), Entries({privileged("A", "1"), nonprivileged("A", "2")}));
}

TEST_F(SettingsReload, SetsThePreviousNonPrivilegedSettingsInTheEnvironmentAgain) {
  load_over("A=1\n[PRIVILEGED]\nP=1\n");
  EXPECT_EQ(variable("A"), "(unset)");  // the loader itself exports nothing that it reads
  ::setenv("A", "environment", 1);
  load_over("");
  EXPECT_EQ(variable("A"), "1");
  EXPECT_EQ(variable("P"), "(unset)");
  ::setenv("__QUORCONF_NOENV", "1", 1);
  ::setenv("A", "environment", 1);
  load_over("");
  EXPECT_EQ(variable("A"), "environment");
}

TEST_F(SettingsReload, ExpandsThePreviousValuesAsAnyValueThatIsAdded) {
  ::setenv("E", "$F", 1);
  EXPECT_EQ(load_over("A=$E\n"), Entries({nonprivileged("A", "$F")}));
  EXPECT_EQ(load_over("F=found\n"), Entries({nonprivileged("F", "found"), nonprivileged("A", "found")}));
}

TEST_F(SettingsReload, ThatFailsLeavesATreeWithoutTheSettingsOfBoth) {
  load_over("A=1\n");
  ::setenv("__KERNEL_DEVELOPER", path("missing").c_str(), 1);
  EXPECT_EQ(zorvcrt::settings::load(own_), QUOR_LOAD_FAILURE);
  EXPECT_EQ(own_entries(), Entries());
}

}  // namespace
