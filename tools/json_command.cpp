// zorvcrt json: documents checked and printed again, compact or pretty.
#include <zorvcrt.h>

#include <array>
#include <cstdio>

#include "arguments.hpp"
#include "owner.hpp"
#include "streams.hpp"

namespace tools {

namespace {

using UniqueDocument = Owner<ZJsonExpression>;

UniqueDocument read_document(const std::string &file) {
  const Input input(file, Input::Meanwhile::kNothing);
  UniqueDocument owner(ZJsonExpression_ParseStream(input.stream()));
  if (owner == nullptr) throw Failure(input.name() + ": not enough memory");
  if (owner->errorMessage != nullptr) throw Failure(input.name() + ": " + owner->errorMessage);
  return owner;
}

void print(const ZJsonExpression &document, bool pretty) {
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(&document, &out, pretty ? 1 : 0);
  const Owner<char> text(out);
  std::fwrite(out, 1, length, stdout);
  std::putchar('\n');
}

constexpr std::array kOptions = {
    Option{"--compact", "", "", "print without white space"},
    Option{"--pretty", "", "", "print a line for each member, which is the default"}};

int run(const Arguments &arguments) {
  if (arguments.has("--compact") && arguments.has("--pretty")) {
    throw Misuse("--compact and --pretty exclude each other");
  }
  Words files = arguments.operands();
  if (files.empty()) files.emplace_back("-");
  for (const std::string &file : files) {
    print(*read_document(file), !arguments.has("--compact"));
  }
  return kSuccess;
}

}  // namespace

const Command kJsonCommand = {
    "json",
    "[FILE...]",
    "check JSON documents and print them again",
    kOptions,
    "Without FILE, and for -, reads standard input. A syntax error is reported with its line and column,\n"
    "exit status 1. A line feed between two strings ends the scanner of the library, and with it the\n"
    "command: exit status 2.\n",
    run};

}  // namespace tools
