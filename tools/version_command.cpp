// zorvcrt version: the version of the library that is loaded.
#include <zorvcrt.h>

#include <cstdio>

#include "arguments.hpp"

namespace tools {

namespace {

int run(const Words &words) {
  Arguments(words, {}, {}).require_operands(0, 0);
  char version[32];
  ZfxGetCrtVersion(version, sizeof version);
  std::printf("zorvcrt_core %s\n", version);
  return kSuccess;
}

}  // namespace

const Command kVersionCommand = {"version", "", "print the version of the library", "", run};

}  // namespace tools
