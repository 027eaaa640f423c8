// zorvcrt version: the version of the library that is loaded.
#include <zorvcrt.h>

#include <array>
#include <cstdio>

#include "arguments.hpp"
#include "records.hpp"

namespace tools {

namespace {

constexpr std::array kOptions = {kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 0);
  char version[32];
  ZfxGetCrtVersion(version, sizeof version);
  if (arguments.wants_json()) {
    print_json(JsonRecord().add("library", "zorvcrt_core").add("version", version).take());
  } else {
    std::printf("zorvcrt_core %s\n", version);
  }
  return kSuccess;
}

}  // namespace

const Command kVersionCommand = {"version", "", "print the version of the library", kOptions, "", run};

}  // namespace tools
