// zorvcrt utf8: UCS-2 text of an input as UTF-8, a block at a time.
#include <zorvcrt.h>

#include <cstring>
#include <new>
#include <vector>

#include "arguments.hpp"
#include "owner.hpp"
#include "streams.hpp"

namespace tools {

namespace {

constexpr std::size_t kUnitsOfBlock = 32768;

int run(const Arguments &arguments) {
  arguments.require_operands(0, 1);
  Input input(arguments.operands().empty() ? "-" : arguments.operands()[0],
              Input::Meanwhile::kStandardOutput);
  std::vector<uint16_t> units(kUnitsOfBlock);
  std::size_t size = 0;
  do {
    size = input.read(units.data(), units.size() * sizeof(uint16_t));
    char *text = nullptr;
    const int32_t length = Ucs2ToUtf8(units.data(), static_cast<int32_t>(size / sizeof(uint16_t)), &text);
    const Owner<char> owner(text);
    if (text == nullptr) throw std::bad_alloc();
    write_output(text, static_cast<std::size_t>(length));
    if (size % sizeof(uint16_t) != 0) throw Failure("the input ends in half a unit");
  } while (size == units.size() * sizeof(uint16_t));
  return kSuccess;
}

}  // namespace

const Command kUtf8Command = {
    "utf8",
    "[FILE]",
    "convert a file or standard input from UCS-2 to UTF-8",
    {},
    "Without FILE, and for -, reads standard input. The 16-bit units are in the byte order of this\n"
    "machine; each is converted by itself, surrogates too.\n",
    run};

}  // namespace tools
