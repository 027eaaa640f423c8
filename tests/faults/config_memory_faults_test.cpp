// Configurations and settings without memory: what cannot be kept is left out, and the next load has it.
#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

#include "allocation_walk.hpp"
#include "conf.h"
#include "dataarea.h"
#include "files.hpp"
#include "files_only_test.hpp"
#include "private_root.hpp"
#include "process_end.hpp"
#include "readrcs.h"
#include "tls.h"
#include "zorvrcs.h"

namespace {

using faults::expect_text;
using faults::Fault;
using faults::FaultedCall;
using faults::Owner;
using faults::QuietCall;
using faults::Text;

using Configuration = Owner<Config, Config_Close>;

constexpr char kSystemFile[] = "/usr/local/zorv/sys/conf/quor.conf";
constexpr char kExtensionFile[] = "/usr/local/zorv/sys/conf/quor.d/more.conf";
constexpr int kMany = 12;  // sections and keys enough for an index

std::string numbered(const char *text, int number) {
  return text + std::to_string(number);
}

std::string many_sections() {
  std::string text = "first=1\n";
  for (int section = 0; section < kMany; ++section) {
    text += "[" + numbered("section", section) + "]\n";
    for (int key = 0; key < (section == 0 ? kMany : 2); ++key) {
      text += numbered("key", key) + "=" + numbered("value", key) + "\n";
    }
  }
  return text;
}

void expect_whole(const Config *config) {
  EXPECT_STREQ(Config_GetEntry(Config_GetSection(config, ""), "first")->value, "1");
  for (int section = 0; section < kMany; ++section) {
    const ConfigSection *found = Config_GetSection(config, numbered("section", section).c_str());
    for (int key = 0; key < (section == 0 ? kMany : 2); ++key) {
      const ConfigEntry *entry = Config_GetEntry(found, numbered("key", key).c_str());
      ASSERT_NE(entry, nullptr) << section << " " << key;
      EXPECT_EQ(entry->value, numbered("value", key));
    }
  }
}

void open_configuration(Fault &fault) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.conf", many_sections());
  errno = 0;
  const std::string path = folder / "a.conf";
  const Configuration config(fault.during([&] { return Config_Open(path.c_str()); }));
  if (!fault.struck()) {
    ASSERT_NE(config, nullptr);
  }
  if (config != nullptr) {
    expect_whole(config.get());
  } else {
    EXPECT_EQ(errno, ENOMEM);
  }
}

// Sets an entry that is "old", or there is none, to "new".
void set_entry(Fault &fault, const char *key, const char *before) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.conf", "there=old\n");
  const Configuration config(Config_Open((folder / "a.conf").c_str()));
  ConfigSection *section = Config_GetSection(config.get(), "");
  const auto value = [&] {
    const ConfigEntry *entry = Config_GetEntry(section, key);
    return std::string(entry == nullptr ? "" : entry->value);
  };
  const std::string long_value(3000, 'x');
  const int32_t result = fault.during([&] { return Config_SetEntry(section, key, long_value.c_str()); });
  EXPECT_EQ(result, fault.struck() ? -1 : 0);
  EXPECT_EQ(value(), fault.struck() ? before : long_value);
  EXPECT_EQ(Config_SetEntry(section, key, "new"), 0);
  EXPECT_EQ(value(), "new");
}

// What one file cannot give for lack of memory it does not give at all, or gives at the next merge.
void merge_folder(Fault &fault) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.conf", "ConfigDir=parts\nfirst=0\n");
  support::write_file(folder / "parts/b.conf", many_sections());
  const Configuration config(Config_Open((folder / "a.conf").c_str()));
  const int32_t result = fault.during([&] { return Config_DirOpen(config.get(), nullptr, nullptr); });
  if (!fault.struck()) {
    EXPECT_EQ(result, 0);
  } else {
    EXPECT_TRUE(result == 0 || result == -1) << result;
  }
  const ConfigEntry *first = Config_GetEntry(Config_GetSection(config.get(), ""), "first");
  EXPECT_TRUE(std::string(first->value) == "1" || (fault.struck() && std::string(first->value) == "0"));
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  expect_whole(config.get());
}

int32_t count_token(void *count, const char * /*token*/) {
  ++*static_cast<int *>(count);
  return 0;
}

void split_value(Fault &fault) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.conf", "list=a,b,c\n");
  const Configuration config(Config_Open((folder / "a.conf").c_str()));
  const ConfigEntry *entry = Config_GetEntry(Config_GetSection(config.get(), ""), "list");
  int count = 0;
  const int32_t result = fault.during([&] { return Config_TokenizeValue(entry, ',', count_token, &count); });
  EXPECT_EQ(result, fault.struck() ? -1 : 0);
  EXPECT_EQ(count, fault.struck() ? 0 : 3);
}

// An installation with every kind of file, without export to the environment: what that keeps could not be
// counted.
struct Installation {
  Installation() {
    QuorConfSetPath(nullptr);
    support::write_file(
        kSystemFile, "PLAIN=1\nREFERENCE=$PLAIN-x\n[PRIVILEGED]\nSECRET=2\n[GROUP:root,daemon]\nSHARED=3\n");
    support::write_file(std::string(support::kPrivateHome) + "/.ZORVrcs", "OWN=4\n");
    support::write_file(kExtensionFile, "MORE=5\n");
  }
  ~Installation() { QuorConfSetPath(nullptr); }
  Installation(const Installation &) = delete;
  Installation &operator=(const Installation &) = delete;

  support::EnvironmentVariable no_export{"__QUORCONF_NOENV", "1"};
};

// Every setting has its value or, when memory has run out, may be absent.
void expect_settings(bool may_lack) {
  const std::pair<const char *, const char *> settings[] = {
      {"PLAIN", "1"}, {"SECRET", "2"}, {"OWN", "4"}, {"MORE", "5"}};
  for (const auto &[name, value] : settings) {
    expect_text(name, QuorConfQuery(name, QUOR_LEVEL_ALL), value, may_lack);
  }
  const char *reference = QuorConfQuery("REFERENCE", QUOR_LEVEL_ALL);
  if (reference == nullptr || std::string(reference) != "1-x") {
    EXPECT_TRUE(may_lack && (reference == nullptr || std::string(reference) == "-x"));
  }
}

// The call loads the settings, as far as there is memory for them. After that they can be loaded whole.
template <auto kCall>
void load(Fault &fault) {
  const Installation installation;
  fault.during(kCall);
  expect_settings(fault.struck());
  QuorConfRemove();
  expect_settings(false);
  EXPECT_STREQ(QuorConfQuery("QUOR_BLOCK_SIZE", QUOR_LEVEL_ALL), "2048");
}

void load_by_asking(Fault &fault) {
  load<[] {
    const int32_t exists = QuorConfExists();
    EXPECT_TRUE(exists == 1 || exists == 0);
  }>(fault);
  const Installation installation;
  EXPECT_EQ(QuorConfExists(), 1);
  QuorConfRemove();
}

void load_by_printing(Fault &fault) {
  support::CapturedDescriptor output(STDOUT_FILENO);
  load<QuorConfPrint>(fault);
  EXPECT_TRUE(fault.struck() || output.text().find("\tPLAIN\t1\n") != std::string::npos) << output.text();
}

void load_by_updating(Fault &fault) {
  const Installation installation;
  fault.during([] { QuorConfUpdate("CHANGED", "value"); });
  expect_settings(fault.struck());
  expect_text("CHANGED", QuorConfQuery("CHANGED", QUOR_LEVEL_ALL), "value", fault.struck());
  QuorConfUpdate("CHANGED", "again");
  EXPECT_STREQ(QuorConfQuery("CHANGED", QUOR_LEVEL_ALL), "again");
}

// A change for which memory is lacking changes nothing.
void change_setting(Fault &fault) {
  const Installation installation;
  QuorConfUpdate("CHANGED", "before");
  fault.during([] { QuorConfUpdate("CHANGED", "behind"); });
  EXPECT_STREQ(QuorConfQuery("CHANGED", QUOR_LEVEL_ALL), fault.struck() ? "before" : "behind");
  expect_settings(false);
}

void remove_setting(Fault &fault) {
  const Installation installation;
  QuorConfUpdate("CHANGED", "before");
  fault.during([] { QuorConfUpdate("CHANGED", nullptr); });
  EXPECT_STREQ(QuorConfQuery("CHANGED", QUOR_LEVEL_ALL), fault.struck() ? "before" : nullptr);
}

// Without memory for the path nothing changes; else the settings are those behind the new path, as far as
// there is memory for them.
void choose_path(Fault &fault) {
  const Installation installation;
  const support::TemporaryFolder folder;
  const std::string path = folder / "other.conf";
  support::write_file(path, "PLAIN=other\n");
  support::write_file(folder / "first.conf", "PLAIN=first\n");
  QuorConfSetPath((folder / "first.conf").c_str());
  fault.during([&] { QuorConfSetPath(path.c_str()); });
  const char *plain = QuorConfQuery("PLAIN", QUOR_LEVEL_ALL);
  const std::string found = plain == nullptr ? "" : plain;
  EXPECT_TRUE(found == "other" || (fault.struck() && (found == "first" || found.empty()))) << found;
  QuorConfSetPath(path.c_str());
  EXPECT_STREQ(QuorConfQuery("PLAIN", QUOR_LEVEL_ALL), "other");
}

// The export leaves every variable that was there, and of the settings those that it could set.
void export_settings(Fault &fault) {
  const Installation installation;
  ::unsetenv("__QUORCONF_NOENV");
  const support::EnvironmentVariable before("BEFORE", "kept");
  for (const char *name : {"PLAIN", "REFERENCE", "SECRET", "SHARED", "OWN", "MORE", "QUOR_BLOCK_SIZE"}) {
    ::unsetenv(name);
  }
  fault.during([] { QuorConfCreate(); });
  EXPECT_STREQ(std::getenv("BEFORE"), "kept");
  for (const auto &[name, value] : {std::pair{"PLAIN", "1"}, {"SECRET", "2"}, {"OWN", "4"}, {"MORE", "5"}}) {
    expect_text(name, std::getenv(name), value, fault.struck());
    ::unsetenv(name);
  }
  EXPECT_EQ(::setenv("BEHIND", "works", 1), 0);
  EXPECT_STREQ(std::getenv("BEHIND"), "works");
  ::unsetenv("BEHIND");
  ::unsetenv("QUOR_HOME");
  ::setenv("__QUORCONF_NOENV", "1", 1);
}

// A developer's file that cannot be opened ends the process, whatever the reason is.
void load_developer_file(Fault &fault) {
  const Installation installation;
  constexpr char kFile[] = "/usr/local/zorv/developer.conf";
  support::write_file(kFile, "PLAIN=dev\n");
  const support::EnvironmentVariable developer("__KERNEL_DEVELOPER", kFile);
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        const char *plain = fault.during([] { return QuorConfQuery("PLAIN", QUOR_LEVEL_ALL); });
        expect_text("PLAIN", plain, "dev", fault.struck());
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (end.returned) return;
  EXPECT_EQ(end.status, 91) << end.errors;
  EXPECT_TRUE(end.errors.starts_with("Cannot load config file! (#9091) ")) << end.errors;
}

// Each thread's copy of the file is made at its first question and goes with it.
template <class Read>
void read_in_a_new_thread(Fault &fault, Read read) {
  support::write_file(kSystemFile, "PLAIN=1\n");
  std::thread([&] {
    const Owner<char, ZfxFreeRCS> value(fault.during([&] { return read("PLAIN"); }));
    expect_text("PLAIN", value.get(), "1", fault.struck());
    const Owner<char, ZfxFreeRCS> again(read("PLAIN"));
    EXPECT_STREQ(again.get(), "1");
  }).join();
}

void read_variable(Fault &fault) {
  support::write_file(kSystemFile, "PLAIN=file\n");
  const support::EnvironmentVariable variable("PLAIN", "1");
  read_in_a_new_thread(fault, [](const char *name) { return ZfxReadRCS(name, 7); });
}

// Under a high key the C library, too, needs memory to keep the copy; the answer does not depend on that.
void read_setting_by_own_key(Fault &fault) {
  uint32_t keys[40] = {};
  for (uint32_t &key : keys) {
    EXPECT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  }
  read_in_a_new_thread(fault, [&](const char *name) { return ZfxReadTlsRCS(keys[39], name, 7); });
  for (const uint32_t key : keys) {
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  }
}

constexpr FaultedCall kFaulted[] = {
    {"Config_DirOpen", "ManySections", merge_folder},
    {"Config_Open", "ManySections", open_configuration},
    {"Config_SetEntry", "Present", [](Fault &fault) { set_entry(fault, "there", "old"); }},
    {"Config_SetEntry", "New", [](Fault &fault) { set_entry(fault, "absent", ""); }},
    {"Config_TokenizeValue", "List", split_value},
    {"QuorConfCreate", "Load", load<[] { EXPECT_EQ(QuorConfCreate(), 0); }>},
    {"QuorConfCreate", "Export", export_settings, faults::kEnvironmentKeepsBlocks},
    {"QuorConfExists", "Load", load_by_asking},
    {"QuorConfPrint", "Load", load_by_printing},
    {"QuorConfQuery", "Load", load<[] { QuorConfQuery("PLAIN", QUOR_LEVEL_ALL); }>},
    {"QuorConfQuery", "LoadOfADevelopersFile", load_developer_file},
    {"QuorConfSetPath", "Load", choose_path},
    {"QuorConfStart", "Load", load<[] {
       QuorConfStart();
       while (QuorConfNext(nullptr, nullptr) != nullptr) {
       }
     }>},
    {"QuorConfUpdate", "Load", load_by_updating},
    {"QuorConfUpdate", "Change", change_setting},
    {"QuorConfUpdate", "Remove", remove_setting},
    {"ZfxReadRCS", "FromTheFile",
     [](Fault &fault) { read_in_a_new_thread(fault, [](const char *name) { return ZfxReadRCS(name, 7); }); }},
    {"ZfxReadRCS", "FromTheEnvironment", read_variable},
    {"ZfxReadTlsRCS", "FromTheFile", read_setting_by_own_key},
};

char area[2048];

const QuietCall kQuiet[] = {
    {"Config_Close", [] { Config_Close(nullptr); }},
    {"Config_GetEntry", [] { Config_GetEntry(nullptr, nullptr); }},
    {"Config_GetSection", [] { Config_GetSection(nullptr, nullptr); }},
    {"GetZorvDataArea", [] { GetZorvDataArea(area, sizeof area, 1, nullptr, 0); }},
    {"QuorConfNext", [] { QuorConfNext(nullptr, nullptr); }},
    {"QuorConfQuery", [] { EXPECT_STREQ(QuorConfQuery("PLAIN", QUOR_LEVEL_ALL), "1"); }},
    {"QuorConfRemove",
     [] {
       support::FailingAllocator none(1, true);
       QuorConfRemove();
       EXPECT_FALSE(none.stop());
     }},
    {"ZfxCloseRCS", [] { ZfxCloseRCS(); }},
    {"ZfxCloseTlsRCS", [] { ZfxCloseTlsRCS(1000); }},
    {"ZfxFreeRCS", [] { ZfxFreeRCS(nullptr); }},
    {"ZfxOpenTlsRCS", [] { ZfxOpenTlsRCS(1000); }},
    {"tlsRCSDealloc", [] { tlsRCSDealloc(nullptr); }},
    {"unload_zorvrcs", [] { unload_zorvrcs(); }},
};

struct ConfigWithoutMemory : faults::FilesOnlyTest, ::testing::WithParamInterface<FaultedCall> {};

TEST_P(ConfigWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ConfigWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct ConfigFrugal : faults::FilesOnlyTest, ::testing::WithParamInterface<QuietCall> {};

TEST_P(ConfigFrugal, TakesNoMemory) {
  const Installation installation;
  QuorConfCreate();
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ConfigFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(ConfigMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("config"));
}

}  // namespace
