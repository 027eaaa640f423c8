// Standard input and output as blocks of bytes.
#include "streams.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "command.hpp"

namespace tools {

std::size_t read_input(void *area, std::size_t size) {
  const std::size_t count = std::fread(area, 1, size, stdin);
  if (std::ferror(stdin) != 0) throw Failure(std::string("standard input: ") + std::strerror(errno));
  return count;
}

bool write_output(const void *bytes, std::size_t size) {
  return std::fwrite(bytes, 1, size, stdout) == size;
}

}  // namespace tools
