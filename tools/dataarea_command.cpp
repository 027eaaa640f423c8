// zorvcrt dataarea: whether the data area is configured, and whether what it should hold is there.
#include <zorvcrt.h>

#include <array>
#include <cstdio>
#include <sstream>

#include "arguments.hpp"
#include "records.hpp"

namespace tools {

namespace {

struct NamedCheck {
  const char *name;
  uint32_t bit;
};

constexpr std::array kChecks = {NamedCheck{"conf", ZORV_CHECK_CONF}, NamedCheck{"cof", ZORV_CHECK_COF},
                                NamedCheck{"log", ZORV_CHECK_LOG}, NamedCheck{"db", ZORV_CHECK_DB},
                                NamedCheck{"ctl", ZORV_CHECK_CTL}};

uint32_t check_named(const std::string &name) {
  for (const NamedCheck &check : kChecks) {
    if (name == check.name) return check.bit;
  }
  throw Misuse("unknown check '" + name + "': conf, cof, log, db or ctl");
}

uint32_t checks_in(const std::string &list) {
  uint32_t checks = 0;
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    checks |= check_named(name);
  }
  if (checks == 0) throw Misuse("option --check needs at least one of conf, cof, log, db, ctl");
  return checks;
}

// Without a check the library does not tell the folder.
void print_as_json(uint32_t checks, const char *path) {
  JsonRecord record;
  record.add("configured", json_flag(true));
  if (checks != 0) record.add("folder", path);
  JsonList passed;
  for (const NamedCheck &check : kChecks) {
    if ((checks & check.bit) != 0) passed.add(json_text(check.name));
  }
  print_json(record.add("checked", passed.take()).take());
}

constexpr std::array kOptions = {
    Option{"--check", "", "LIST", "the parts that must be there, of conf,cof,log,db,ctl"}, kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 0);
  const auto list = arguments.value("--check");
  const uint32_t checks = list ? checks_in(*list) : 0;
  char path[2048] = "";
  char message[4096] = "";
  if (GetZorvDataArea(path, sizeof path, checks, message, sizeof message) != 0) throw Failure(message);
  if (arguments.wants_json()) {
    print_as_json(checks, path);
  } else {
    std::puts(checks == 0 ? "The ZORV data area is configured" : path);
  }
  return kSuccess;
}

}  // namespace

const Command kDataareaCommand = {
    "dataarea",
    "",
    "find and check the data area",
    kOptions,
    "Without --check tells whether the data area is configured. With it checks the named parts and\n"
    "prints the data area's folder when they are all there. Exit status 1 when something is missing.\n",
    run};

}  // namespace tools
