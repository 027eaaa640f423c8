// Configurations and settings when the system refuses: what cannot be read is passed over, and the process
// stays where it is.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

#include "call_walk.hpp"
#include "conf.h"
#include "dataarea.h"
#include "datedelta.h"
#include "files.hpp"
#include "files_only_test.hpp"
#include "private_root.hpp"
#include "readrcs.h"
#include "tls.h"
#include "zorvrcs.h"

namespace {

using faults::CallFault;
using faults::expect_text;
using faults::SystemCall;

constexpr char kSystemFile[] = "/usr/local/zorv/sys/conf/quor.conf";

const char *value_of(const Config *config, const char *section, const char *key) {
  const ConfigEntry *entry = Config_GetEntry(Config_GetSection(config, section), key);
  return entry == nullptr ? nullptr : entry->value;
}

// Null when the file cannot be opened; a read that fails ends the file there.
void open_configuration(CallFault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "a.conf";
  support::write_file(path, "first=1\n[s]\nsecond=2\n");
  Config *config = fault.during([&] { return Config_Open(path.c_str()); });
  EXPECT_EQ(config == nullptr, fault.struck("fopen"));
  if (config == nullptr) {
    EXPECT_EQ(errno, fault.error());
    return;
  }
  const char *first = value_of(config, "", "first");
  const char *second = value_of(config, "s", "second");
  if (!fault.struck("fgets_unlocked")) {
    EXPECT_STREQ(second, "2") << "a file that is read is read whole";
  }
  if (second != nullptr) {
    EXPECT_STREQ(first, "1");
  }
  Config_Close(config);
}

// -1 when the folder cannot be opened; a file that cannot be read is passed over, the others are merged.
void merge_folder(CallFault &fault) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.conf", "ConfigDir=parts\nfirst=0\n");
  support::write_file(folder / "parts/b.conf", "first=1\n");
  support::write_file(folder / "parts/c.conf", "[new]\nkey=1\n");
  Config *config = Config_Open((folder / "a.conf").c_str());
  const int32_t result = fault.during([&] { return Config_DirOpen(config, nullptr, nullptr); });
  EXPECT_EQ(result, fault.struck("opendir") ? -1 : 0);
  const char *key = value_of(config, "new", "key");
  const bool has_first = std::string(value_of(config, "", "first")) == "1";
  if (!fault.is_persistent() && !fault.struck("opendir") && !fault.struck("readdir")) {
    EXPECT_TRUE(has_first || key != nullptr) << "one failure costs one file at most";
  }
  if (!fault.struck() || fault.struck("closedir")) {
    EXPECT_TRUE(has_first);
    EXPECT_STREQ(key, "1");
  }
  EXPECT_EQ(Config_DirOpen(config, nullptr, nullptr), 0);
  EXPECT_STREQ(value_of(config, "new", "key"), "1");
  EXPECT_STREQ(value_of(config, "", "first"), "1");
  Config_Close(config);
}

void make_data_area() {
  support::write_file("/usr/local/zorv/area/conf/sys/quor.conf", "PLAIN=1\n");
  std::filesystem::create_directories("/usr/local/zorv/area/log");
  std::error_code there;
  std::filesystem::create_symlink("area", "/usr/local/zorv/var", there);
}

// Each step has a result of its own; the path is written only when all of them have passed.
void find_data_area(CallFault &fault) {
  make_data_area();
  char path[1100] = "before";
  char message[2100] = "before";
  const int32_t result = fault.during([&] {
    return GetZorvDataArea(path, sizeof path, ZORV_CHECK_CONF | ZORV_CHECK_LOG, message, sizeof message);
  });
  const char *found = fault.struck("readlink") ? "/usr/local/zorv/var" : "/usr/local/zorv/area";
  EXPECT_STREQ(path, result == 0 ? found : "before") << "a link that cannot be read is still a directory";
  EXPECT_EQ(result == 0, std::string(message).empty()) << message;
  if (!fault.struck()) {
    EXPECT_EQ(result, 0);
  } else if (fault.struck("stat")) {
    const std::string text = message;
    const bool not_configured = result == 2 && text == "The ZORV data area is not configured";
    const bool area_is_lost =
        result == fault.error() && text.starts_with("The ZORV data area does not exist: ");
    const bool part_is_lost = result == 20 && text.find("does not exist: ") != std::string::npos;
    EXPECT_TRUE(not_configured || area_is_lost || part_is_lost) << result << " " << text;
  }
}

struct Installation {
  Installation() {
    QuorConfSetPath(nullptr);
    std::filesystem::remove("/usr/local/zorv/var");
    support::write_file(kSystemFile, "PLAIN=1\nREFERENCE=$PLAIN-x\n[PRIVILEGED]\nSECRET=2\n");
    support::write_file("/usr/local/zorv/sys/conf/quor.d/more.conf", "MORE=5\n");
    support::write_file(std::string(support::kPrivateHome) + "/.ZORVrcs",
                        "[GROUP:root]\nG=3\n[NONPRIVILEGED]\nOWN=4\n");
    std::error_code there;
    std::filesystem::create_directories("/usr/local/zorv/sys/lib");
    std::filesystem::create_symlink("/usr/local/zorv/sys/lib/libquor.so.1",
                                    "/usr/local/zorv/sys/lib/libquor.so", there);
  }
  ~Installation() { QuorConfSetPath(nullptr); }
  Installation(const Installation &) = delete;
  Installation &operator=(const Installation &) = delete;

  support::EnvironmentVariable no_export{"__QUORCONF_NOENV", "1"};
  support::CurrentFolder current{"/usr/local"};
};

void expect_setting(const char *name, const char *value, bool may_lack) {
  expect_text(name, QuorConfQuery(name, QUOR_LEVEL_ALL), value, may_lack);
}

// Every file that could be read is there, and of the others nothing that is wrong. The current directory is
// the one that it was, unless the system has refused the way back.
template <auto kCall>
void load(CallFault &fault) {
  const Installation installation;
  fault.during(kCall);
  if (!fault.struck("fchdir") && !(fault.is_persistent() && fault.struck())) {
    EXPECT_EQ(std::filesystem::current_path(), "/usr/local");
  }
  std::filesystem::current_path("/usr/local");
  const bool may_lack = fault.struck();
  expect_setting("PLAIN", "1", may_lack);
  expect_setting("SECRET", "2", may_lack);
  expect_setting("OWN", "4", may_lack);
  expect_setting("MORE", "5", may_lack);
  QuorConfRemove();
  for (const auto &[name, value] : {std::pair{"PLAIN", "1"},
                                    {"REFERENCE", "1-x"},
                                    {"SECRET", "2"},
                                    {"OWN", "4"},
                                    {"MORE", "5"},
                                    {"QUOR_HOME", "/usr/local/zorv/sys"}}) {
    expect_setting(name, value, false);
  }
}

void load_by_printing(CallFault &fault) {
  support::CapturedDescriptor output(STDOUT_FILENO);
  load<QuorConfPrint>(fault);
  EXPECT_TRUE(fault.struck() || output.text().find("\tPLAIN\t1\n") != std::string::npos) << output.text();
}

void choose_path(CallFault &fault) {
  const Installation installation;
  support::write_file("/usr/local/zorv/other.conf", "PLAIN=other\n");
  fault.during([] { QuorConfSetPath("/usr/local/zorv/other.conf"); });
  expect_setting("PLAIN", "other", fault.struck());
  QuorConfRemove();
  expect_setting("PLAIN", "other", false);
}

// The export leaves out what the system does not take.
void export_settings(CallFault &fault) {
  const Installation installation;
  ::unsetenv("__QUORCONF_NOENV");
  for (const char *name :
       {"PLAIN", "REFERENCE", "SECRET", "G", "OWN", "MORE", "QUOR_HOME", "QUOR_BLOCK_SIZE"}) {
    ::unsetenv(name);
  }
  const support::EnvironmentVariable before("BEFORE", "kept");
  fault.during([] { QuorConfCreate(); });
  std::filesystem::current_path("/usr/local");
  EXPECT_STREQ(std::getenv("BEFORE"), "kept");
  for (const auto &[name, value] : {std::pair{"PLAIN", "1"}, {"SECRET", "2"}, {"OWN", "4"}, {"MORE", "5"}}) {
    expect_text(name, std::getenv(name), value, fault.struck());
  }
  for (const char *name :
       {"PLAIN", "REFERENCE", "SECRET", "G", "OWN", "MORE", "QUOR_HOME", "QUOR_BLOCK_SIZE"}) {
    ::unsetenv(name);
    EXPECT_EQ(std::getenv(name), nullptr);
  }
  ::setenv("__QUORCONF_NOENV", "1", 1);
}

// Null without a file that can be opened; a read that fails ends the copy there, and a copy that cannot be
// kept is read anew.
template <class Read>
void read_by(CallFault &fault, Read read) {
  support::write_file(kSystemFile, "PLAIN=1\nLAST=2\n");
  std::thread([&] {
    char *value = fault.during(read);
    expect_text("LAST", value, "2", fault.struck());
    ZfxFreeRCS(value);
    if (!fault.struck("fgets")) {
      value = read();
      EXPECT_STREQ(value, "2");
      ZfxFreeRCS(value);
    }
  }).join();
}

void read_setting_by_own_key(CallFault &fault) {
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  read_by(fault, [key] { return ZfxReadTlsRCS(key, "LAST", 7); });
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

void start_without_copy(CallFault &fault) {
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  const int32_t result = fault.during([&] { return ZfxOpenTlsRCS(key); });
  EXPECT_EQ(result, fault.error());
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

constexpr SystemCall kCalls[] = {
    {"Config_DirOpen", "TwoFiles", merge_folder},
    {"Config_Open", "File", open_configuration},
    {"GetZorvDataArea", "Link", find_data_area},
    {"QuorConfCreate", "Load", load<[] { EXPECT_EQ(QuorConfCreate(), 0); }>},
    {"QuorConfCreate", "Export", export_settings, faults::kEnvironmentKeepsBlocks},
    {"QuorConfExists", "Load",
     load<[] { EXPECT_EQ(QuorConfExists(), 1) << "trouble with files is no failure"; }>},
    {"QuorConfPrint", "Load", load_by_printing},
    {"QuorConfQuery", "Load", load<[] { QuorConfQuery("PLAIN", QUOR_LEVEL_ALL); }>},
    {"QuorConfSetPath", "Load", choose_path},
    {"QuorConfStart", "Load", load<[] { EXPECT_NE(QuorConfStart(), nullptr); }>},
    {"QuorConfUpdate", "Load", load<[] { QuorConfUpdate("CHANGED", "value"); }>},
    {"ZfxOpenTlsRCS", "OwnKey", start_without_copy},
    {"ZfxReadRCS", "File", [](CallFault &fault) { read_by(fault, [] { return ZfxReadRCS("LAST", 7); }); }},
    {"ZfxReadTlsRCS", "File", read_setting_by_own_key},
};

struct ConfigRefused : faults::FilesOnlyTest, ::testing::WithParamInterface<SystemCall> {};

TEST_P(ConfigRefused, KeepsItsContractWhicheverSystemCallFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ConfigRefused, ::testing::ValuesIn(kCalls), faults::RowName());

}  // namespace
