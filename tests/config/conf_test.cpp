#include "conf.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <strings.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "files.hpp"
#include "locale.hpp"
#include "plain_text.hpp"
#include "random_text.hpp"

namespace {

struct Close {
  void operator()(Config *config) const { Config_Close(config); }
};
using Configuration = std::unique_ptr<Config, Close>;
using Entries = std::vector<std::pair<std::string, std::string>>;
using Sections = std::vector<std::pair<std::string, Entries>>;

class ConfTest : public ::testing::Test {
 protected:
  Configuration open(const std::string &text, const std::string &name = "main.conf") {
    support::write_file(folder / name, text);
    return Configuration(Config_Open((folder / name).c_str()));
  }

  support::TemporaryFolder folder;
};

Entries entries_of(const ConfigSection *section) {
  Entries entries;
  for (const ConfigEntry *entry = section->entries; entry != nullptr; entry = entry->next) {
    entries.emplace_back(entry->key, entry->value);
  }
  return entries;
}

Sections sections_of(const Configuration &config) {
  Sections sections;
  for (const ConfigSection *section = config->sections; section != nullptr; section = section->next) {
    sections.emplace_back(section->name, entries_of(section));
  }
  return sections;
}

std::string value_of(const Configuration &config, const char *section, const char *key) {
  const ConfigEntry *entry = Config_GetEntry(Config_GetSection(config.get(), section), key);
  return entry == nullptr ? "(none)" : entry->value;
}

TEST_F(ConfTest, AnEmptyFileHasTheUnnamedSectionOnly) {
  EXPECT_EQ(sections_of(open("")), (Sections{{"", {}}}));
}

TEST_F(ConfTest, GivesNullForAFileThatCannotBeOpened) {
  EXPECT_EQ(Config_Open((folder / "missing").c_str()), nullptr);
  EXPECT_EQ(Config_Open(nullptr), nullptr);
}

TEST_F(ConfTest, KeepsTheFileNameAsGiven) {
  const Configuration config = open("");
  EXPECT_EQ(config->file_name, folder / "main.conf");
}

TEST_F(ConfTest, OpensAFolderAsAnEmptyConfiguration) {
  EXPECT_EQ(sections_of(Configuration(Config_Open(folder.path().c_str()))), (Sections{{"", {}}}));
}

TEST_F(ConfTest, LeavesNoDescriptorOpen) {
  const int before = support::open_descriptors();
  const Configuration config = open("ConfigDir = .\n");
  Config_DirOpen(config.get(), nullptr, nullptr);
  EXPECT_EQ(support::open_descriptors(), before);
}

TEST_F(ConfTest, KeepsSectionsAndEntriesInFileOrder) {
  EXPECT_EQ(sections_of(open("a=1\n[S]\nb=2\nc=3\n[T]\n[S]\nd=4")),
            (Sections{{"", {{"a", "1"}}}, {"S", {{"b", "2"}, {"c", "3"}}}, {"T", {}}, {"S", {{"d", "4"}}}}));
}

TEST_F(ConfTest, SkipsEmptyLinesAndComments) {
  EXPECT_EQ(sections_of(open("\n   \n# a\n  ; b\n'c\n//d\n/e\n\t\n")), (Sections{{"", {{"/e", ""}}}}));
}

TEST_F(ConfTest, NamesASectionUpToTheLastBracketOrTheEnd) {
  EXPECT_EQ(sections_of(open("[Main] Extra]\n[ x ]y\n[open\n[]\n[\n")),
            (Sections{{"", {}}, {"Main] Extra", {}}, {" x ", {}}, {"open", {}}, {"", {}}, {"", {}}}));
}

TEST_F(ConfTest, SplitsAnEntryAtTheFirstEqualsSign) {
  EXPECT_EQ(sections_of(open("  a = b = c  \nkey\n=v\nk=\n")),
            (Sections{{"", {{"a", "b = c"}, {"key", ""}, {"", "v"}, {"k", ""}}}}));
}

TEST_F(ConfTest, TakesALineInPiecesOf1023Bytes) {
  for (const std::size_t size : {1022U, 1023U, 1024U, 2046U, 2047U}) {
    const std::string line(size, 'x');
    Entries expected;
    for (std::size_t start = 0; start < size; start += 1023)
      expected.emplace_back(line.substr(start, 1023), "");
    EXPECT_EQ(sections_of(open(line + "\n")), (Sections{{"", expected}})) << size;
    EXPECT_EQ(sections_of(open(line)), (Sections{{"", expected}})) << size;
  }
}

TEST_F(ConfTest, ReadsALineUpToAZeroByte) {
  EXPECT_EQ(sections_of(open(std::string("a=b\0c\nd=e\n", 10))), (Sections{{"", {{"a", "b"}, {"d", "e"}}}}));
}

TEST_F(ConfTest, ReadsALineOf100MegabytesInBoundedMemory) {
  support::write_file(folder / "long.conf", "a=1");
  ASSERT_EQ(::truncate((folder / "long.conf").c_str(), 100 << 20), 0);  // a line of zero bytes
  std::ofstream(folder / "long.conf", std::ios::app) << "\nb=2\n";
  rusage before{};
  ::getrusage(RUSAGE_SELF, &before);
  const Configuration config(Config_Open((folder / "long.conf").c_str()));
  rusage after{};
  ::getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(sections_of(config), (Sections{{"", {{"a", "1"}, {"b", "2"}}}}));
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 8 * 1024);
}

TEST_F(ConfTest, FindsTheFirstSectionBehindTheUnnamedOneWithoutRegardToCase) {
  const Configuration config = open("k=0\n[Main]\nk=1\n[main]\nk=2\n[]\nk=3\n");
  EXPECT_EQ(value_of(config, "MAIN", "k"), "1");
  EXPECT_EQ(value_of(config, nullptr, "k"), "0");
  EXPECT_EQ(value_of(config, "", "k"), "0");
  EXPECT_EQ(Config_GetSection(config.get(), "other"), nullptr);
  EXPECT_EQ(Config_GetSection(nullptr, ""), nullptr);
}

TEST_F(ConfTest, FindsTheFirstEntryWithoutRegardToCase) {
  const Configuration config = open("Key=1\nkey=2\n=3\n");
  EXPECT_EQ(value_of(config, "", "KEY"), "1");
  EXPECT_EQ(value_of(config, "", ""), "3");
  EXPECT_EQ(value_of(config, "", "ke"), "(none)");
  EXPECT_EQ(Config_GetEntry(config->sections, nullptr), nullptr);
  EXPECT_EQ(Config_GetEntry(nullptr, "key"), nullptr);
}

TEST_F(ConfTest, SetsAnEntryInItsPlace) {
  const Configuration config = open("a=1\nb=2\nB=3\n");
  EXPECT_EQ(Config_SetEntry(config->sections, "B", "new"), 0);
  EXPECT_EQ(entries_of(config->sections), (Entries{{"a", "1"}, {"b", "new"}, {"B", "3"}}));
  EXPECT_EQ(Config_SetEntry(config->sections, "b", config->sections->entries->next->value + 1), 0);
  EXPECT_EQ(value_of(config, "", "b"), "ew");
  EXPECT_EQ(Config_SetEntry(config->sections, "b", nullptr), 0);
  EXPECT_EQ(value_of(config, "", "b"), "");
}

TEST_F(ConfTest, PutsANewEntryAtTheHead) {
  const Configuration config = open("a=1\n[Empty]\n");
  EXPECT_EQ(Config_SetEntry(config->sections, "b", "2"), 0);
  EXPECT_EQ(entries_of(config->sections), (Entries{{"b", "2"}, {"a", "1"}}));
  ConfigSection *empty = Config_GetSection(config.get(), "empty");
  EXPECT_EQ(Config_SetEntry(empty, "x", "1"), 0);
  EXPECT_EQ(Config_SetEntry(empty, "y", nullptr), 0);
  EXPECT_EQ(entries_of(empty), (Entries{{"y", ""}, {"x", "1"}}));
}

TEST_F(ConfTest, RefusesToSetWithoutASectionOrAKey) {
  const Configuration config = open("a=1\n");
  EXPECT_EQ(Config_SetEntry(nullptr, "a", "2"), -1);
  EXPECT_EQ(Config_SetEntry(config->sections, nullptr, "2"), -1);
  EXPECT_EQ(entries_of(config->sections), (Entries{{"a", "1"}}));
}

TEST_F(ConfTest, MergesOverridesOfKnownKeysAndWholeNewSections) {
  const Configuration config = open("ConfigDir=d\nu=0\n[Main]\nx=1\n[Other]\nz=1\n");
  support::write_file(folder / "d/one.conf", "u=1\nv=1\n[MAIN]\nX=2\ny=2\n[New]\na=1\nb=2\n");
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  EXPECT_EQ(sections_of(config), (Sections{{"", {{"ConfigDir", "d"}, {"u", "1"}}},
                                           {"Main", {{"x", "2"}}},
                                           {"Other", {{"z", "1"}}},
                                           {"New", {{"a", "1"}, {"b", "2"}}}}));
  EXPECT_EQ(value_of(config, "new", "B"), "2");
  EXPECT_EQ(Config_SetEntry(Config_GetSection(config.get(), "New"), "c", "3"), 0);
  EXPECT_EQ(value_of(config, "New", "c"), "3");
}

TEST_F(ConfTest, KeepsAllOfALargeFileThatIsMerged) {
  const Configuration config = open("ConfigDir=d\n");
  std::string text = "[New]\n";
  for (int i = 0; i < 5000; ++i) {
    text += "key" + std::to_string(i) + "=value " + std::to_string(i) + "\n";
  }
  support::write_file(folder / "d/one.conf", text);
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  EXPECT_EQ(value_of(config, "New", "key0"), "value 0");
  EXPECT_EQ(value_of(config, "New", "key2500"), "value 2500");
  EXPECT_EQ(value_of(config, "New", "key4999"), "value 4999");
}

TEST_F(ConfTest, GivesBackAllItsMemory) {
  std::string text = "[Section]\n";
  for (int i = 0; i < 1000; ++i) {
    text += "key" + std::to_string(i) + "=value\n";
  }
  const auto use = [&] {
    const Configuration config = open(text);
    EXPECT_EQ(
        Config_SetEntry(Config_GetSection(config.get(), "Section"), "key1", std::string(5000, 'x').c_str()),
        0);
  };
  for (int round = 0; round < 5; ++round) {
    use();  // the heap settles
  }
  const std::size_t before = ::mallinfo2().uordblks;
  for (int round = 0; round < 5; ++round) {
    use();
  }
  EXPECT_LT(::mallinfo2().uordblks, before + 5000) << "what the rounds leave is more than one value";
}

TEST_F(ConfTest, MergesASecondSectionOfTheSameNewNameAsOverridesOnly) {
  const Configuration config = open("ConfigDir=d\n");
  support::write_file(folder / "d/one.conf", "[New]\na=1\n[new]\na=2\nb=2\n[]\nConfigDir=elsewhere\n");
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  EXPECT_EQ(sections_of(config), (Sections{{"", {{"ConfigDir", "elsewhere"}}}, {"New", {{"a", "2"}}}}));
}

TEST_F(ConfTest, MergesTheSameFolderAgainWithoutAddingAnything) {
  const Configuration config = open("ConfigDir=d\n");
  support::write_file(folder / "d/one.conf", "[New]\na=1\n");
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
    EXPECT_EQ(sections_of(config), (Sections{{"", {{"ConfigDir", "d"}}}, {"New", {{"a", "1"}}}}));
  }
}

// A pipe that nobody writes to would be waited for until the end of days.
TEST_F(ConfTest, PassesOverPipesAndDevicesInTheFolder) {
  const Configuration config = open("ConfigDir=d\n");
  support::write_file(folder / "d/file.conf", "[New]\na=1\n");
  ASSERT_EQ(::mkfifo((folder / "d/pipe.conf").c_str(), 0600), 0);
  support::make_link("/dev/zero", folder / "d/device.conf");
  support::make_link(folder / "d/file.conf", folder / "d/link.conf");
  const int descriptors = support::open_descriptors();
  ::alarm(30);
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  ::alarm(0);
  EXPECT_EQ(support::open_descriptors(), descriptors);
  EXPECT_EQ(sections_of(config), (Sections{{"", {{"ConfigDir", "d"}}}, {"New", {{"a", "1"}}}}));
}

TEST_F(ConfTest, MergesOnlyFilesWhoseNameEndsInConf) {
  const Configuration config = open("ConfigDir=d\n");
  for (const char *name : {"a.conf", "b.CONF", "c.d.Conf", ".conf", "conf", "d.config", "e.conf.bak", "f."}) {
    support::write_file(folder / (std::string("d/") + name), std::string("[") + name + "]\n");
  }
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  Sections sections = sections_of(config);
  std::sort(sections.begin(), sections.end());
  EXPECT_EQ(
      sections,
      (Sections{
          {"", {{"ConfigDir", "d"}}}, {".conf", {}}, {"a.conf", {}}, {"b.CONF", {}}, {"c.d.Conf", {}}}));
}

TEST_F(ConfTest, FindsTheFolderByTheNamedSectionAndKeyOrTheDefaults) {
  support::write_file(folder / "d/one.conf", "[New]\n");
  const Configuration config = open("[Paths]\nExtra=d\nConfigDir=missing\n");
  EXPECT_EQ(Config_DirOpen(config.get(), "paths", "extra"), 0);
  EXPECT_NE(Config_GetSection(config.get(), "New"), nullptr);
  EXPECT_EQ(Config_DirOpen(config.get(), "Paths", nullptr), -1);
  EXPECT_EQ(Config_DirOpen(config.get(), "Paths", ""), -1);
  EXPECT_EQ(Config_DirOpen(config.get(), "", "Extra"), -1);
  EXPECT_EQ(Config_DirOpen(config.get(), "absent", "Extra"), -1);
  EXPECT_EQ(Config_DirOpen(nullptr, "Paths", "Extra"), -1);
}

TEST_F(ConfTest, TakesTheSectionNameUpTo63Bytes) {
  const std::string name(63, 'n');
  const Configuration config =
      open("[" + name + "]\nConfigDir=.\n[" + std::string(64, 'm') + "]\nConfigDir=.\n");
  EXPECT_EQ(Config_DirOpen(config.get(), name.c_str(), nullptr), 0);
  EXPECT_EQ(Config_DirOpen(config.get(), (name + "beyond").c_str(), nullptr), 0);
  EXPECT_EQ(Config_DirOpen(config.get(), name.substr(1).c_str(), nullptr), -1);
  EXPECT_EQ(Config_DirOpen(config.get(), std::string(64, 'm').c_str(), nullptr), -1);
}

TEST_F(ConfTest, TakesAnAbsoluteFolderAsItIs) {
  support::write_file(folder / "else/where/x.conf", "[New]\n");
  const Configuration config = open("ConfigDir=" + (folder / "else/where") + "\n");
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  EXPECT_NE(Config_GetSection(config.get(), "New"), nullptr);
}

TEST_F(ConfTest, TakesARelativeFolderFromTheConfigurationFileAndNotFromTheCurrentFolder) {
  support::write_file(folder / "sub/d/x.conf", "[Right]\n");
  support::write_file(folder / "d/x.conf", "[Wrong]\n");
  support::write_file(folder / "sub/main.conf", "ConfigDir=d\n");
  const support::CurrentFolder current(folder.path());
  const Configuration config(Config_Open("sub/main.conf"));
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  EXPECT_NE(Config_GetSection(config.get(), "Right"), nullptr);
  EXPECT_EQ(Config_GetSection(config.get(), "Wrong"), nullptr);
}

TEST_F(ConfTest, KeepsAFileNameWithoutASlashWholeInFrontOfARelativeFolder) {
  support::write_file(folder / "d/x.conf", "[New]\n");
  support::write_file(folder / "main.conf", "ConfigDir=d\n");
  const support::CurrentFolder current(folder.path());
  const Configuration config(Config_Open("main.conf"));
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), -1);  // main.conf/d
  ASSERT_EQ(::unlink("main.conf"), 0);
  support::write_file(folder / "main.conf/d/x.conf", "[New]\n");
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
}

TEST_F(ConfTest, BoundsTheFolderTo2047Bytes) {
  for (const std::size_t size : {2046U, 2047U, 2048U, 6000U}) {
    const std::string start = folder / "";
    const Configuration config = open("ConfigDir=x\n[New]\n");
    support::write_file(folder / "x.conf", "");
    // "//////.../" of the wanted size: the folder itself, or when cut still the root
    const std::string value = start + std::string(size - start.size(), '/');
    Config_SetEntry(config->sections, "ConfigDir", value.c_str());
    EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0) << size;
    Config_SetEntry(config->sections, "ConfigDir", (value + "missing").c_str());
    EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), size >= 2047 ? 0 : -1) << size;
  }
}

TEST_F(ConfTest, PassesOverFilesThatCannotBeRead) {
  const Configuration config = open("ConfigDir=d\n");
  for (int i = 0; i < 200; ++i) {
    const std::string path = folder / ("d/" + std::to_string(i) + ".conf");
    support::make_link("missing", path);
  }
  support::write_file(folder / "d/forbidden.conf", "[New]\n");
  ASSERT_EQ(::chmod((folder / "d/forbidden.conf").c_str(), 0), 0);
  ASSERT_EQ(::mkdir((folder / "d/folder.conf").c_str(), 0700), 0);
  EXPECT_EQ(Config_DirOpen(config.get(), nullptr, nullptr), 0);
  const bool readable = ::access((folder / "d/forbidden.conf").c_str(), R_OK) == 0;  // root reads anything
  EXPECT_EQ(sections_of(config).size(), readable ? 2U : 1U);
}

int32_t collect(void *user_data, const char *token) {
  static_cast<std::vector<std::string> *>(user_data)->emplace_back(token);
  return 7;
}

std::vector<std::string> tokens_of(const Configuration &config, const std::string &value,
                                   char separator = ',') {
  Config_SetEntry(config->sections, "list", value.c_str());
  std::vector<std::string> tokens;
  const ConfigEntry *entry = Config_GetEntry(config->sections, "list");
  EXPECT_EQ(Config_TokenizeValue(entry, separator, collect, &tokens), 0);
  return tokens;
}

TEST_F(ConfTest, TokenizesAValueWithoutItsEmptyParts) {
  using Tokens = std::vector<std::string>;
  const Configuration config = open("");
  EXPECT_EQ(tokens_of(config, " a , ,b "), (Tokens{"a", "b"}));
  EXPECT_EQ(tokens_of(config, ""), Tokens{});
  EXPECT_EQ(tokens_of(config, " , ,, "), Tokens{});
  EXPECT_EQ(tokens_of(config, ",,,a,,,b c,,"), (Tokens{"a", "b c"}));
  EXPECT_EQ(tokens_of(config, ",, a,,\t b"), (Tokens{"a", "b"}));
  EXPECT_EQ(tokens_of(config, "one"), (Tokens{"one"}));
  EXPECT_EQ(tokens_of(config, "a  b\tc", ' '), (Tokens{"a", "b\tc"}));
  EXPECT_EQ(tokens_of(config, "a,b;c", ';'), (Tokens{"a,b", "c"}));
}

TEST_F(ConfTest, CutsATokenTo2047Bytes) {
  const Configuration config = open("");
  for (const std::size_t size : {2046U, 2047U, 2048U, 5000U}) {
    const std::vector<std::string> tokens = tokens_of(config, std::string(size, 'x') + ",b");
    ASSERT_EQ(tokens.size(), 2U);
    EXPECT_EQ(tokens[0].size(), std::min<std::size_t>(size, 2047));
    EXPECT_EQ(tokens[1], "b");
  }
}

TEST_F(ConfTest, FindsATokenBehindAnyNumberOfEmptyParts) {
  const Configuration config = open("");
  for (const std::string &empty : {std::string(3000, ','), std::string(3000, ' ')}) {
    EXPECT_EQ(tokens_of(config, empty + "a,b"), (std::vector<std::string>{"a", "b"}));
  }
}

TEST_F(ConfTest, RefusesToTokenizeWithoutAnEntryOrACallback) {
  const Configuration config = open("a=1,2\n");
  EXPECT_EQ(Config_TokenizeValue(nullptr, ',', collect, nullptr), -1);
  EXPECT_EQ(Config_TokenizeValue(config->sections->entries, ',', nullptr, nullptr), -1);
}

TEST_F(ConfTest, LetsTheCallbackChangeTheEntry) {
  const Configuration config = open("a=1,2,3\n");
  Config_SetEntry(config->sections, "a", "1,2,3");
  const auto change = [](void *section, const char *token) -> int32_t {
    return Config_SetEntry(static_cast<ConfigSection *>(section), "a", token);
  };
  EXPECT_EQ(Config_TokenizeValue(config->sections->entries, ',', change, config->sections), 0);
  EXPECT_EQ(value_of(config, "", "a"), "3");
}

TEST(Conf, CloseIgnoresNull) {
  Config_Close(nullptr);
}

// Look-ups as a walk over the lists, which the public records allow anyone.
const ConfigSection *walk_to_section(const Configuration &config, const std::string &name) {
  const ConfigSection *section = config->sections;
  if (name.empty()) return section;
  do
    section = section->next;
  while (section != nullptr && ::strcasecmp(section->name, name.c_str()) != 0);
  return section;
}

const ConfigEntry *walk_to_entry(const ConfigSection *section, const std::string &key) {
  const ConfigEntry *entry = section->entries;
  while (entry != nullptr && ::strcasecmp(entry->key, key.c_str()) != 0)
    entry = entry->next;
  return entry;
}

std::string random_name(std::mt19937 &random, const char *alphabet, unsigned lengths) {
  return support::random_text(random, 1 + random() % lengths, alphabet);
}

void expect_look_ups_find_the_first(const Configuration &config, std::mt19937 &random, const char *alphabet) {
  for (int look_up = 0; look_up < 300; ++look_up) {
    const std::string name = random_name(random, alphabet, 2);
    ASSERT_EQ(Config_GetSection(config.get(), name.c_str()), walk_to_section(config, name)) << name;
    const ConfigSection *section = walk_to_section(config, look_up % 3 == 0 ? name : "");
    if (section == nullptr) continue;
    const std::string key = random_name(random, alphabet, 3);
    ASSERT_EQ(Config_GetEntry(section, key.c_str()), walk_to_entry(section, key)) << key;
  }
}

TEST_F(ConfTest, FindsWhatAWalkOverTheListsFindsAfterRandomEdits) {
  std::mt19937 random(20261121);
  const char *alphabet = "aAbBiI1_\xE9\xC9";
  for (int round = 0; round < 12; ++round) {
    std::string text;
    for (int line = 0; line < 400; ++line) {
      const bool header = line > 100 && random() % 6 == 0;
      text +=
          header ? "[" + random_name(random, alphabet, 2) + "]\n" : random_name(random, alphabet, 3) + "=1\n";
    }
    const Configuration config = open(text);
    expect_look_ups_find_the_first(config, random, alphabet);
    for (int edit = 0; edit < 200; ++edit) {
      const std::string section = random_name(random, alphabet, 2);
      const std::string key = random_name(random, alphabet, 3);
      Config_SetEntry(Config_GetSection(config.get(), edit % 2 == 0 ? "" : section.c_str()), key.c_str(),
                      std::to_string(edit).c_str());
    }
    expect_look_ups_find_the_first(config, random, alphabet);
  }
}

TEST_F(ConfTest, FindsWhatTheLocaleFoldsTogetherHoweverManyEntriesThereAre) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer's own strcasecmp() knows ASCII only";
#endif
  const support::Locale turkish("tr_TR.ISO-8859-9");
  ASSERT_TRUE(turkish.in_force());
  std::string text = "tak\xFD=dotless\n\xFC=umlaut\n";
  for (int i = 0; i < 100; ++i)
    text += "k" + std::to_string(i) + "=\n";
  const Configuration config = open(text);
  EXPECT_EQ(value_of(config, "", "TAKI"), "dotless");
  EXPECT_EQ(value_of(config, "", "\xDC"), "umlaut");
  EXPECT_EQ(value_of(config, "", "taki"), "(none)");
}

// The file format, written down on ordinary strings.
Sections plain_sections(const std::string &text) {
  Sections sections{{"", {}}};
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t newline = text.find('\n', start);
    const std::size_t rest = (newline == std::string::npos ? text.size() : newline + 1) - start;
    const std::size_t size = std::min<std::size_t>(rest, 1023);
    const std::string line = plain::trimmed(text.substr(start, size).c_str());
    start += size;
    if (line.empty() || std::strchr("#;'", line[0]) != nullptr || line.compare(0, 2, "//") == 0) continue;
    if (line[0] == '[') {
      const std::size_t bracket = line.rfind(']');
      sections.emplace_back(line.substr(1, bracket == std::string::npos ? bracket : bracket - 1), Entries{});
      continue;
    }
    const std::size_t equals = line.find('=');
    const std::string value = equals == std::string::npos ? "" : plain::trimmed(line.substr(equals + 1));
    sections.back().second.emplace_back(plain::trimmed(line.substr(0, equals)), value);
  }
  return sections;
}

TEST_F(ConfTest, AgreesWithThePlainRulesOnRandomFiles) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab=[] \t;#'/\n\n\n";
  for (int round = 0; round < 500; ++round) {
    std::string text;
    while (text.size() < 60 || random() % 8 != 0) {
      const std::size_t run = random() % 300 == 0 ? 900 + random() % 300 : 1;
      text.append(run, alphabet[random() % alphabet.size()]);
      if (random() % 400 == 0) text += '\0';
    }
    ASSERT_EQ(sections_of(open(text)), plain_sections(text)) << text;
  }
}

}  // namespace
