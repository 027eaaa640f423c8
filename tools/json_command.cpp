// zorvcrt json: documents checked and printed again, compact or pretty.
#include <zorvcrt.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "arguments.hpp"

namespace tools {

namespace {

struct Deleter {
  void operator()(ZJsonExpression *document) const { ZJsonExpression_Delete(document); }
  void operator()(char *text) const { ZfxMemFree(text); }
};
using UniqueDocument = std::unique_ptr<ZJsonExpression, Deleter>;

constexpr char kStandardInput[] = "-";
constexpr int32_t kNoMemory = 63;  // of ZJsonExpression_ParseFile()

UniqueDocument read_document(const std::string &file) {
  ZJsonExpression *document = nullptr;
  const bool is_standard_input = file == kStandardInput;
  const int32_t error = is_standard_input ? 0 : ZJsonExpression_ParseFile(&document, file.c_str());
  if (is_standard_input) document = ZJsonExpression_ParseStream(stdin);
  if (error != 0 && error != kNoMemory) throw Failure(file + ": " + std::strerror(error));
  UniqueDocument owner(document);
  if (owner == nullptr) throw Failure(file + ": not enough memory");
  if (owner->errorMessage != nullptr) throw Failure(file + ": " + owner->errorMessage);
  return owner;
}

void print(const ZJsonExpression &document, bool pretty) {
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(&document, &out, pretty ? 1 : 0);
  const std::unique_ptr<char, Deleter> text(out);
  std::fwrite(out, 1, length, stdout);
  std::putchar('\n');
}

int run(const Words &words) {
  const Arguments arguments(words, {"--compact", "--pretty"}, {});
  if (arguments.has("--compact") && arguments.has("--pretty")) {
    throw Misuse("--compact and --pretty exclude each other");
  }
  Words files = arguments.operands();
  if (files.empty()) files.emplace_back(kStandardInput);
  for (const std::string &file : files) {
    print(*read_document(file), !arguments.has("--compact"));
  }
  return kSuccess;
}

}  // namespace

const Command kJsonCommand = {
    "json", "[--compact|--pretty] [FILE...]", "check JSON documents and print them again",
    "Reads standard input, or each FILE, where - stands for standard input. Prints pretty, unless told\n"
    "--compact. A syntax error is reported with its line and column, exit status 1.\n",
    run};

}  // namespace tools
