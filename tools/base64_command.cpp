// zorvcrt base64: Base64 of an input, or with -d back again, a block at a time.
#include <zorvcrt.h>

#include <algorithm>
#include <array>
#include <new>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "owner.hpp"
#include "streams.hpp"

namespace tools {

namespace {

constexpr std::size_t kBlock = std::size_t{3} * 16384;  // whole groups of bytes, and of characters

int encode(Input &input) {
  std::vector<char> block(kBlock);
  std::size_t count = 0;
  bool any = false;
  do {
    count = input.read(block.data(), block.size());
    char *text = nullptr;
    const uint32_t length = ZfxBase64Encode(block.data(), static_cast<uint32_t>(count), &text);
    const Owner<char> owner(text);
    if (text == nullptr) throw std::bad_alloc();
    any = any || length != 0;
    write_output(text, length);
  } while (count == block.size());
  if (any) write_output("\n", 1);
  return kSuccess;
}

bool ends_text(char c) {
  return c == '=' || c == '\0';
}

bool is_in_alphabet(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

void write_decoded(const std::string &characters) {
  void *bytes = nullptr;
  const uint32_t count = ZfxBase64Decode(characters.data(), static_cast<uint32_t>(characters.size()), &bytes);
  const Owner<void> owner(bytes);
  if (bytes == nullptr) throw std::bad_alloc();
  write_output(bytes, count);
}

// Groups must not be cut at the end of a block, so what is not in the alphabet is left out here already.
int decode(Input &input) {
  std::vector<char> block(kBlock);
  std::string pending;
  for (bool more = true; more;) {
    const std::size_t count = input.read(block.data(), block.size());
    const auto end = block.begin() + static_cast<std::ptrdiff_t>(count);
    const auto stop = std::find_if(block.begin(), end, ends_text);
    more = stop == end && count == block.size();
    std::copy_if(block.begin(), stop, std::back_inserter(pending), is_in_alphabet);
    const std::size_t whole = more ? pending.size() / 4 * 4 : pending.size();
    write_decoded(pending.substr(0, whole));
    pending.erase(0, whole);
  }
  return kSuccess;
}

constexpr std::array kOptions = {Option{"--decode", "-d", "", "decode"}};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 1);
  Input input(arguments.operands().empty() ? "-" : arguments.operands()[0],
              Input::Meanwhile::kStandardOutput);
  return arguments.has("--decode") ? decode(input) : encode(input);
}

}  // namespace

const Command kBase64Command = {
    "base64",
    "[FILE]",
    "encode a file or standard input as Base64, or decode it",
    kOptions,
    "Without FILE, and for -, reads standard input. The encoded text is one line. When decoding, what is\n"
    "not in the alphabet is skipped, and nothing behind the first '=' counts.\n",
    run};

}  // namespace tools
