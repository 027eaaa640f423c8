// uuencode against a plain coder in both directions, with any room for the result.
#include <vector>

#include "check.hpp"
#include "input.hpp"
#include "uu.h"

namespace {

constexpr std::size_t kLineBytes = 45;

char character(uint32_t sextet) {
  return static_cast<char>(sextet == 0 ? '`' : sextet + 32);
}

uint32_t sextet(char c) {
  return (static_cast<uint8_t>(c) - 32U) & 63;
}

struct Result {
  int32_t code = 0;
  std::string written;
};

Result plain_encoded(const std::string &bytes, std::size_t room) {
  Result result;
  std::string &out = result.written;
  for (std::size_t start = 0; start < bytes.size(); start += kLineBytes) {
    const std::string line = bytes.substr(start, kLineBytes);
    const std::string padded = line + std::string(2, '\0');
    if (out.size() < room) out += static_cast<char>(line.size() + 32);
    for (std::size_t i = 0; i < line.size(); i += 3) {
      if (out.size() + 4 > room) {
        result.code = 1;
        return result;
      }
      const auto at = [&](std::size_t k) { return uint32_t{static_cast<uint8_t>(padded[i + k])}; };
      const uint32_t group = at(0) << 16 | at(1) << 8 | at(2);
      for (const unsigned shift : {18U, 12U, 6U, 0U}) {
        out += character(group >> shift & 63);
      }
    }
    out += '\n';
  }
  return result;
}

Result plain_decoded(std::string text, std::size_t room) {
  Result result;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string line = text.substr(0, end).substr(0, end == std::string::npos ? 79 : 80);
    text = end == std::string::npos ? "" : text.substr(end + 1);
    std::size_t count = line.empty() ? 0 : sextet(line[0]);
    if (count == 0) break;
    line.resize(90, ' ');
    for (std::size_t i = 1; count > 0; i += 4) {
      const uint32_t group =
          sextet(line[i]) << 18 | sextet(line[i + 1]) << 12 | sextet(line[i + 2]) << 6 | sextet(line[i + 3]);
      const std::size_t part = std::min<std::size_t>(count, 3);
      if (result.written.size() + part > room) {
        result.code = 1;
        return result;
      }
      for (std::size_t k = 0; k < part; ++k) {
        result.written += static_cast<char>(group >> (16 - 8 * k));
      }
      count -= part;
    }
  }
  return result;
}

std::string encode(const std::string &bytes, std::size_t room) {
  const Result expected = plain_encoded(bytes, room);
  std::vector<char> out(room + 1, '\x7F');
  const int32_t code = zfx_uuencode(fuzz::exact_copy(bytes).get(), static_cast<int32_t>(bytes.size()),
                                    out.data(), static_cast<int32_t>(room));
  fuzz::check_equal(code, expected.code, "result of encoding");
  fuzz::check_equal(std::string(out.data(), expected.written.size()), expected.written, "encoded lines");
  return expected.written;
}

std::string decode(const std::string &text, std::size_t room) {
  const Result expected = plain_decoded(text, room);
  std::vector<char> out(room, '\x7F');
  const auto copy = fuzz::exact_copy(text.c_str(), text.size() + 1);
  const int32_t code = zfx_uudecode(copy.get(), 0, out.data(), static_cast<int32_t>(room));
  fuzz::check_equal(code, expected.code, "result of decoding");
  std::string all = expected.written;
  all.resize(room, '\x7F');
  fuzz::check_equal(std::string(out.data(), room), all, "decoded bytes and what is behind them");
  return expected.written;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto room = static_cast<std::size_t>(input.integer<uint16_t>() % 1500);
  const std::string content = input.rest();
  decode(fuzz::c_text(content), room);
  encode(content, room);
  const std::string lines = encode(content, 2 * content.size() + 4);
  fuzz::check_equal(decode(lines, content.size()), content, "encoded and decoded bytes");
  return 0;
}
