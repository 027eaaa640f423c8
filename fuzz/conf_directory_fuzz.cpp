// A configuration file and the folder of files that one of its entries names, in a temporary folder, against
// merging lists of strings in the order in which the folder lists its files.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "conf.h"
#include "input.hpp"
#include "plain_configuration.hpp"

namespace {

namespace fs = std::filesystem;

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = fs::temp_directory_path() / "fuzz-conf-XXXXXX";
    fuzz::check(::mkdtemp(name.data()) != nullptr, "a temporary folder");
    path_ = name;
  }
  ~TemporaryFolder() { fs::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  [[nodiscard]] const fs::path &path() const { return path_; }

 private:
  fs::path path_;
};

void write(const fs::path &path, const std::string &text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string read(const fs::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Letters, digits and dots of the name, so that no file lies elsewhere.
std::string file_name(const std::string &text) {
  std::string name = "f";
  for (const char c : text.substr(0, 40)) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.') name += c;
  }
  return name;
}

bool counts(const fs::path &path) {
  const std::string name = path.filename();
  const std::size_t dot = name.rfind('.');
  return dot != std::string::npos && plain::is_same(name.substr(dot), ".conf");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const TemporaryFolder folder;
  const fs::path main_file = folder.path() / "main.conf";
  const fs::path directory = folder.path() / "conf.d";
  fuzz::Input input(data, size);
  const std::string key = fuzz::c_text(input.line());
  const std::string text = input.part();
  write(main_file, text);
  fs::create_directory(directory);
  for (int files = 0; files < 8 && !input.is_empty(); ++files) {
    const std::string name = file_name(input.line());
    write(directory / name, input.part());
  }

  plain::Configuration model(text);
  Config *config = Config_Open(main_file.c_str());
  // The entry names the folder whatever the file says; the value of the file is tried by the tests.
  const std::string used_key = key.empty() ? "ConfigDir" : key;
  Config_SetEntry(Config_GetSection(config, nullptr), used_key.c_str(), "conf.d");
  model.find("")->set(used_key, "conf.d");
  for (const auto &entry : fs::directory_iterator(directory)) {
    if (counts(entry.path())) model.merge(plain::Configuration(read(entry.path())));
  }
  fuzz::check_equal(Config_DirOpen(config, nullptr, key.c_str()), 0, "merging a folder");
  plain::compare(*config, model);
  Config_Close(config);
  fs::remove_all(directory);
  return 0;
}
