// zorvcrt json: documents checked and printed again, compact or pretty.
#include <zorvcrt.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"
#include "owner.hpp"

namespace tools {

namespace {

using UniqueDocument = Owner<ZJsonExpression>;

constexpr char kStandardInput[] = "-";

struct Stream {
  explicit Stream(const std::string &file)
      : stream(file == kStandardInput ? stdin : std::fopen(file.c_str(), "rb")) {}
  ~Stream() {
    if (stream != nullptr && stream != stdin) std::fclose(stream);
  }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  // The parser ends the process when its input cannot be read, so the first byte is tried before it.
  [[nodiscard]] bool is_readable() const {
    if (stream == nullptr) return false;
    const int c = std::getc(stream);
    if (c != EOF) std::ungetc(c, stream);
    return c != EOF || std::ferror(stream) == 0;
  }

  FILE *stream;
};

UniqueDocument read_document(const std::string &file) {
  const Stream input(file);
  if (!input.is_readable()) throw Failure(file + ": " + std::strerror(errno));
  UniqueDocument owner(ZJsonExpression_ParseStream(input.stream));
  if (owner == nullptr) throw Failure(file + ": not enough memory");
  if (owner->errorMessage != nullptr) throw Failure(file + ": " + owner->errorMessage);
  return owner;
}

void print(const ZJsonExpression &document, bool pretty) {
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(&document, &out, pretty ? 1 : 0);
  const Owner<char> text(out);
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
    "--compact. A syntax error is reported with its line and column, exit status 1. A line feed\n"
    "between two strings ends the scanner of the library, and with it the command: exit status 2.\n",
    run};

}  // namespace tools
