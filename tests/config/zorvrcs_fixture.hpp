// What the tests of the settings share: an environment and a current folder of their own, loads from a text,
// and the tree as a list.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "files.hpp"
#include "private_root.hpp"
#include "zorvrcs.h"

namespace settings_test {

struct Entry {
  int32_t level;
  std::string name;
  std::string value;

  bool operator==(const Entry &) const = default;
};
using Entries = std::vector<Entry>;

inline std::ostream &operator<<(std::ostream &out, const Entry &entry) {
  return out << entry.level << ' ' << entry.name << '=' << entry.value;
}

inline Entry privileged(std::string name, std::string value) {
  return {QUOR_LEVEL_PRIVILEGED, std::move(name), std::move(value)};
}
inline Entry grouped(std::string name, std::string value) {
  return {QUOR_LEVEL_GROUP, std::move(name), std::move(value)};
}
inline Entry nonprivileged(std::string name, std::string value) {
  return {QUOR_LEVEL_NONPRIVILEGED, std::move(name), std::move(value)};
}

/// The whole tree in the order of the walk.
inline Entries all_entries() {
  Entries entries;
  QuorConfStart();
  int32_t level = 0;
  const char *value = nullptr;
  while (const char *name = QuorConfNext(&level, &value)) {
    entries.push_back({level, name, value});
  }
  return entries;
}

/// The tree without the two settings that a load adds of its own accord.
inline Entries entries() {
  Entries kept = all_entries();
  std::erase_if(
      kept, [](const Entry &entry) { return entry.name == "QUOR_HOME" || entry.name == "QUOR_BLOCK_SIZE"; });
  return kept;
}

/// The value of a non-privileged setting in the tree, whatever the environment says; "(none)" without it.
inline std::string stored(std::string_view name) {
  for (const Entry &entry : all_entries()) {
    if (entry.level == QUOR_LEVEL_NONPRIVILEGED && entry.name == name) return entry.value;
  }
  return "(none)";
}

/// An environment variable's value, "(unset)" without it.
inline std::string variable(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "(unset)" : value;
}

/// What a query answers, "(none)" for null.
inline std::string query(const char *name, int32_t mask = QUOR_LEVEL_ALL) {
  const char *value = QuorConfQuery(name, mask);
  return value == nullptr ? "(none)" : value;
}

/// Empties the environment and puts it back at the end.
class EmptyEnvironment {
 public:
  EmptyEnvironment() {
    for (char **entry = environ; *entry != nullptr; ++entry) {
      before_.emplace_back(*entry);
    }
    ::clearenv();
  }
  ~EmptyEnvironment() {
    ::clearenv();
    for (const std::string &entry : before_) {
      const std::size_t equals = entry.find('=');
      ::setenv(entry.substr(0, equals).c_str(), entry.c_str() + equals + 1, 1);
    }
  }
  EmptyEnvironment(const EmptyEnvironment &) = delete;
  EmptyEnvironment &operator=(const EmptyEnvironment &) = delete;

 private:
  std::vector<std::string> before_;
};

/// A test that starts without settings, in an empty folder and an empty environment.
template <class Base>
class WithoutSettings : public Base {
 protected:
  void SetUp() override {
    Base::SetUp();
    if (this->IsSkipped()) return;
    environment_.emplace();
    folder_.emplace();
    current_.emplace(folder_->path());
    QuorConfSetPath(nullptr);
  }

  void TearDown() override {
    if (!this->IsSkipped()) QuorConfSetPath(nullptr);
    current_.reset();
    folder_.reset();
    environment_.reset();
  }

  /// A path in the folder of the test.
  [[nodiscard]] std::string path(std::string_view name) const { return *folder_ / name; }

  /// Puts the text where __KERNEL_DEVELOPER points to, for the next load.
  void prepare(std::string_view text) {
    ::unlink(path("developer.conf").c_str());  // writing a file over flushes it to the disk
    support::write_file(path("developer.conf"), text);
    ::setenv("__KERNEL_DEVELOPER", path("developer.conf").c_str(), 1);
    QuorConfRemove();
  }

  /// Loads the text alone, in an environment without a trace of earlier loads, and tells what it gives.
  Entries load(std::string_view text) {
    ::clearenv();
    prepare(text);
    return entries();
  }

 private:
  std::optional<EmptyEnvironment> environment_;
  std::optional<support::TemporaryFolder> folder_;
  std::optional<support::CurrentFolder> current_;
};

using SettingsTest = WithoutSettings<::testing::Test>;
using FixedPathSettingsTest = WithoutSettings<support::FixedPathsTest>;

}  // namespace settings_test
