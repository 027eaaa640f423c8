// Single settings of a thread's copy of the settings file against a walk over its lines. The linker puts a
// file in memory in the place of the one with the fixed name, which is not touched.
#include <strings.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "check.hpp"
#include "input.hpp"
#include "readrcs.h"
#include "tls.h"

namespace {

std::string file_text;

struct Answer {
  bool found = false;
  std::string value;
};

bool is_space(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

std::string without_comment(const std::string &value) {
  const std::size_t comment = value.find('#');
  std::string kept = value.substr(0, comment);
  while (comment != std::string::npos && kept.size() > 1 && is_space(kept.back())) {
    kept.pop_back();
  }
  return kept;
}

Answer plain_answer(const std::string &name) {
  constexpr std::size_t kPiece = 510;
  for (std::size_t at = 0; at < file_text.size();) {
    const std::size_t line_end = std::min(file_text.find('\n', at), file_text.size() - 1) + 1;
    const std::size_t end = std::min(line_end, at + kPiece);
    std::string line = fuzz::c_text(file_text.substr(at, end - at));
    at = end;
    while (!line.empty() && is_space(line.back())) {
      line.pop_back();
    }
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos && ::strcasecmp(line.substr(0, equals).c_str(), name.c_str()) == 0) {
      return {true, without_comment(line.substr(equals + 1))};
    }
  }
  return {};
}

}  // namespace

extern "C" FILE *__real_fopen(const char *path, const char *mode);
extern "C" FILE *__wrap_fopen(const char *path, const char *mode) {
  if (std::string(path) != "/usr/local/zorv/sys/conf/quor.conf") return __real_fopen(path, mode);
  return ::fmemopen(file_text.data(), file_text.size(), "r");
}

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static uint32_t key = 0;
  static const int32_t made = ZfxCreateTLS(&key, tlsRCSDealloc);
  fuzz::check_equal(made, 0, "making a key");
  fuzz::Input input(data, size);
  const std::string names = input.part();
  file_text = input.rest();
  if (file_text.empty()) return 0;
  fuzz::Input list(reinterpret_cast<const uint8_t *>(names.data()), names.size());
  for (bool more = true; more; more = !list.is_empty()) {
    const std::string name = fuzz::c_text(list.line());
    if (std::getenv(name.c_str()) != nullptr) continue;
    char *value = ZfxReadTlsRCS(key, name.c_str(), 7);
    const Answer expected = plain_answer(name);
    fuzz::check_equal(value != nullptr, expected.found, "whether there is a value");
    if (value != nullptr) fuzz::check_equal(std::string(value), expected.value, "value");
    ZfxFreeRCS(value);
  }
  ZfxCloseTlsRCS(key);
  return 0;
}
