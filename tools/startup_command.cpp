// zorvcrt startup: what a host does from its first question to a log line, shown step by step.
#include <unistd.h>
#include <zorvcrt.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "arguments.hpp"
#include "levels.hpp"
#include "log_line.hpp"
#include "owner.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

constexpr uint32_t kEverything = 5;
constexpr int32_t kSampleError = 2;

void heading(const char *text) {
  std::printf("\n%s\n", bold(stdout, std::string("== ") + text).c_str());
}

const char *presence(const std::string &path) {
  return ::access(path.c_str(), R_OK) == 0 ? "there" : "not there";
}

// The files in the order in which the reader looks for them.
void show_search_order() {
  heading("Where the settings come from");
  if (const char *file = std::getenv("__KERNEL_DEVELOPER"); file != nullptr) {
    std::printf("__KERNEL_DEVELOPER names the file: %s (%s)\n", file, presence(file));
    std::puts("without it the order would be:");
  }
  char area[2048] = "";
  char message[4096] = "";
  if (GetZorvDataArea(area, sizeof area, ZORV_CHECK_CONF, message, sizeof message) == 0) {
    const std::string file = std::string(area) + "/conf/sys/quor.conf";
    std::printf("  1. the data area's file: %s (%s)\n", file.c_str(), presence(file));
  } else {
    std::printf("  1. the data area's file: %s\n", message);
  }
  const std::string fallback = "/usr/local/zorv/sys/conf/quor.conf";
  std::printf("  2. failing that: %s (%s)\n", fallback.c_str(), presence(fallback));
  std::puts("  3. then the user's file: .ZORVrcs in the home folder");
  std::puts(
      "  4. then the extension folder, quor.d beside the system file or what QUOR_CONF_DIR names:\n     "
      "every entry with .conf in its name");
}

void show_queries() {
  heading("Queries across the levels");
  std::printf("%-20s %-12s %-8s %-34s %s\n", "name", "privileged", "group", "non-privileged", "all levels");
  for (const char *name : {"QUOR_HOME", "QUOR_BLOCK_SIZE", "LICENCE_SEATS", "AUDIT_KEEP_DAYS",
                           "BACKUP_PARALLEL", "LISTEN_PORT", "FEATURE_LEGACY_WIRE", "TEAM_NAME", "HOME"}) {
    std::array<const char *, 4> answers{};
    const std::array masks = {QUOR_LEVEL_PRIVILEGED, QUOR_LEVEL_GROUP, QUOR_LEVEL_NONPRIVILEGED,
                              QUOR_LEVEL_ALL};
    for (std::size_t i = 0; i < masks.size(); ++i) {
      const char *value = QuorConfQuery(name, masks[i]);
      answers[i] = value == nullptr ? "-" : value;
    }
    std::printf("%-20s %-12s %-8s %-34s %s\n", name, answers[0], answers[1], answers[2], answers[3]);
  }
}

void show_environment() {
  heading("The environment comes first where the non-privileged level is asked");
  for (const char *name : {"LISTEN_URL", "AUDIT_KEEP_DAYS"}) {
    const char *loaded = QuorConfQuery(name, QUOR_LEVEL_ALL);
    std::printf("%s as loaded: %s\n", name, loaded == nullptr ? "-" : loaded);
    ::setenv(name, "from the environment", 1);
    std::printf("  after setenv: all levels: %s", QuorConfQuery(name, QUOR_LEVEL_ALL));
    const char *privileged = QuorConfQuery(name, QUOR_LEVEL_PRIVILEGED);
    std::printf("; privileged: %s\n", privileged == nullptr ? "-" : privileged);
  }
}

std::string compose_log_file() {
  heading("The log file");
  // The directory is handed over as a copy: composing a name takes a trailing separator off it in place.
  const char *setting = QuorConfQuery("QUOR_LOG", QUOR_LEVEL_ALL);
  std::string directory = setting == nullptr ? "" : setting;
  if (!directory.empty()) CreatePath(directory.c_str());
  char path[4096];
  getLogFileNameEx(path, directory.data(), "startup", nullptr, 1, 0, 1);
  std::printf("QUOR_LOG: %s\nname:     %s\n", setting == nullptr ? "-" : setting, path);
  return path;
}

void collect_line(void *lines, const char *line) {
  static_cast<Words *>(lines)->emplace_back(line);
}

void log_at_all_levels(Logger *logger) {
  constexpr std::array messages = {"the store cannot be opened", "a page does not verify",
                                   "the cache is small", "the settings are loaded", "this is for developers"};
  for (uint32_t level = 1; level <= messages.size(); ++level) {
    log_line(logger, level, ZfxGetSourceLocation(__func__, __FILE__, __LINE__), level < 4 ? kSampleError : 0,
             messages[level - 1]);
  }
}

void log_everywhere(const std::string &path) {
  const Owner<Logger> file(Logger_New(kEverything, path.c_str(), 0));
  if (Logger_GetLogFileno(file.get()) < 0) throw Failure("cannot append to " + path);
  log_at_all_levels(file.get());

  heading("Five levels on standard error");
  std::fflush(stdout);
  const Owner<Logger> screen(Logger_New(kEverything, nullptr, 1));
  log_at_all_levels(screen.get());

  heading("The same through a callback, at level 3 (warning)");
  Words lines;
  const Owner<Logger> callback(Logger_New(3, nullptr, 0));
  Logger_SetCallback(callback.get(), collect_line, &lines);
  log_at_all_levels(callback.get());
  for (const std::string &line : lines) {
    std::printf("callback got: %s", line.c_str());
  }

  heading("And what the log file holds");
  std::ifstream written(path);
  for (std::string line; std::getline(written, line);) {
    std::puts(line.c_str());
  }
}

int run(const Arguments &arguments) {
  arguments.require_operands(0, 0);
  show_search_order();
  if (QuorConfExists() == 0) {
    throw Failure(std::string("the settings cannot be loaded: ") + std::strerror(errno));
  }
  heading("The settings");
  QuorConfPrint();
  show_queries();
  show_environment();
  log_everywhere(compose_log_file());
  return kSuccess;
}

}  // namespace

const Command kStartupCommand = {
    "startup",
    "",
    "load the settings, compose a log file name and log, step by step",
    {},
    "Shows what a host does when it starts: where the settings come from, the tree, queries, the log\n"
    "file in the folder that QUOR_LOG names, and lines at all five levels to the file, to standard\n"
    "error and to a callback. __KERNEL_DEVELOPER in the environment points the reader at a file.\n",
    run};

}  // namespace tools
