// A settings file, or two one after the other, against a plain restatement of the format. The reader is
// called below the search for files, so that nothing is read from or written to the machine.
#include <grp.h>
#include <unistd.h>

#include <map>
#include <vector>

#include "check.hpp"
#include "config/plain_settings.hpp"
#include "input.hpp"
#include "zorvrcs_reader.hpp"

namespace {

namespace settings = zorvcrt::settings;

// The variables that a value can refer to, besides none.
bool prepare_environment() {
  ::clearenv();
  ::setenv("E", "environment $A", 1);
  ::setenv("LONG", std::string(700, 'l').c_str(), 1);
  return true;
}

// The group database is asked once for each name.
bool is_own_group(const std::string &name) {
  static std::map<std::string, bool> known;
  static const std::vector<gid_t> own = [] {
    std::vector<gid_t> groups(65536);
    groups.resize(static_cast<std::size_t>(::getgroups(65536, groups.data())));
    return groups;
  }();
  if (const auto place = known.find(name); place != known.end()) return place->second;
  const struct group *entry = ::getgrnam(name.c_str());
  const bool is_own = entry != nullptr && std::find(own.begin(), own.end(), entry->gr_gid) != own.end();
  return known[name] = is_own;
}

bool is_member(const std::string &names) {
  std::string name;
  for (const char c : names + ',') {
    if (c != ',' && std::string_view(plain::kBlanks).find(c) == std::string_view::npos) {
      name += c;
      continue;
    }
    if (!name.empty() && is_own_group(name)) return true;
    name.clear();
  }
  return false;
}

void read(std::string text, int32_t mask, settings::Tree &tree) {
  if (text.empty()) return;
  FILE *file = ::fmemopen(text.data(), text.size(), "r");
  settings::read_settings(file, mask, tree);
  std::fclose(file);
}

std::vector<std::string> entries_of(const settings::Tree &tree) {
  std::vector<std::string> entries;
  for (const auto &section : tree.sections()) {
    for (auto *item = section.first(); item != nullptr; item = section.after(*item)) {
      entries.push_back(std::to_string(section.level()) + ' ' + item->name.get() + '=' + item->value.get());
    }
  }
  return entries;
}

std::vector<std::string> entries_of(const plain::Settings &model) {
  std::vector<std::string> entries;
  for (const auto &[level, name, value] : model.entries()) {
    entries.push_back(std::to_string(level) + ' ' + name + '=' + value);
  }
  return entries;
}

void check_queries(const settings::Tree &tree, const plain::Settings &model) {
  for (const auto &[level, name, value] : model.entries()) {
    const char *found = tree.find(name, level);
    fuzz::check(found != nullptr, "every setting is found at its level");
    fuzz::check_equal(std::string(found), value, "value at a level");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const bool is_prepared = prepare_environment();
  fuzz::check(is_prepared, "the environment is known");
  fuzz::Input input(data, size);
  const settings::UniqueTree tree = settings::make_tree();
  plain::Settings model(is_member);
  // The second file is read on the same tree; levels start anew with each.
  for (int files = 0; files < 2 && !input.is_empty(); ++files) {
    const std::string text = input.part();
    read(text, QUOR_LEVEL_ALL, *tree);
    model.read(text);
    fuzz::check_equal(entries_of(*tree), entries_of(model), "settings");
  }
  check_queries(*tree, model);
  return 0;
}
