// uuencode and uudecode of 8 MiB. Sharutils are commands: measured is the processor time of their process,
// less that of one with empty input. They read from memory and write to /dev/null, so that no disk counts;
// what they spend on reading and on the line ends of a text remains, as it does for their user.
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "contender.hpp"
#include "uu.h"

namespace {

constexpr int32_t kSize = 8 << 20;
constexpr char kInput[] = "8 MiB";

const std::string &data() {
  static const std::string bytes = bench::random_bytes(kSize);
  return bytes;
}

std::vector<char> text_area() {
  return std::vector<char>(static_cast<std::size_t>(kSize) / 45 * 62 + 128);
}

const std::vector<char> &encoded() {
  static const std::vector<char> text = [] {
    std::vector<char> area = text_area();
    zfx_uuencode(data().data(), kSize, area.data(), static_cast<int32_t>(area.size() - 2));
    return area;
  }();
  return text;
}

char character_of(unsigned sextet) {
  return static_cast<char>(sextet == 0 ? '`' : sextet + ' ');
}

char *encode_group(const unsigned char *in, char *out) {
  *out++ = character_of(in[0] >> 2U);
  *out++ = character_of((in[0] << 4U & 0x30U) | in[1] >> 4U);
  *out++ = character_of((in[1] << 2U & 0x3CU) | in[2] >> 6U);
  *out++ = character_of(in[2] & 0x3FU);
  return out;
}

// Whole lines only: what a line less costs does not show at this size.
void encode_by_loop(char *out) {
  const auto *in = reinterpret_cast<const unsigned char *>(data().data());
  for (int32_t line = 0; line < kSize / 45; ++line) {
    *out++ = 'M';
    for (int group = 0; group < 15; ++group, in += 3) {
      out = encode_group(in, out);
    }
    *out++ = '\n';
  }
}

void decode_by_loop(const char *in, char *out) {
  const auto sextet = [](char c) { return (static_cast<unsigned>(c) - 32U) & 0x3FU; };
  for (int32_t line = 0; line < kSize / 45; ++line, in += 2) {
    for (int group = 0; group < 15; ++group, in += 4) {
      const unsigned bits = sextet(in[1]) << 18U | sextet(in[2]) << 12U | sextet(in[3]) << 6U | sextet(in[4]);
      *out++ = static_cast<char>(bits >> 16U);
      *out++ = static_cast<char>(bits >> 8U);
      *out++ = static_cast<char>(bits);
    }
  }
}

#ifdef HAVE_SHARUTILS
// A file in memory with the text.
int file_with(const std::string &text) {
  const int descriptor = ::memfd_create("input", MFD_CLOEXEC);
  if (::write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    std::perror("write");
  return descriptor;
}

double seconds(const timeval &time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Runs a command on the input and gives its processor time; below 0 when it failed.
double run(const std::vector<const char *> &words, int input) {
  ::lseek(input, 0, SEEK_SET);
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const bool started = ::posix_spawnp(&child, words[0], &files, nullptr,
                                      const_cast<char *const *>(words.data()), environ) == 0;
  ::posix_spawn_file_actions_destroy(&files);
  int status = -1;
  rusage used{};
  if (!started || ::wait4(child, &status, 0, &used) != child || status != 0) return -1;
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void measure(benchmark::State &state, const std::vector<const char *> &words, const std::string &text,
             const std::string &empty) {
  const int input = file_with(text);
  const int nothing = file_with(empty);
  for (auto _ : state) {
    const double all = run(words, input);
    const double start = run(words, nothing);
    if (all < 0 || start < 0) state.SkipWithError("the command failed");
    state.SetIterationTime(all - start);
  }
  ::close(input);
  ::close(nothing);
}

void add_commands() {
  bench::contender("uuencode", kInput, "sharutils", [](benchmark::State &state) {
    measure(state, {"uuencode", "data", nullptr}, data(), "");
  })->UseManualTime();
  bench::contender("uudecode", kInput, "sharutils", [](benchmark::State &state) {
    const std::string begin = "begin 644 data\n";
    const std::string end = "`\nend\n";
    measure(state, {"uudecode", "-o", "/dev/stdout", nullptr}, begin + encoded().data() + end, begin + end);
  })->UseManualTime();
}
#endif

[[maybe_unused]] const bool added = [] {
  bench::contender("uuencode", kInput, bench::kOwn, [](benchmark::State &state) {
    std::vector<char> text = text_area();
    benchmark::DoNotOptimize(data().data());  // made before the time counts
    for (auto _ : state) {
      if (zfx_uuencode(data().data(), kSize, text.data(), static_cast<int32_t>(text.size() - 2)) != 0) {
        state.SkipWithError("wrong result");
      }
      benchmark::ClobberMemory();
    }
  });
  bench::contender("uuencode", kInput, "byte loop", [](benchmark::State &state) {
    std::vector<char> text = text_area();
    benchmark::DoNotOptimize(data().data());  // made before the time counts
    for (auto _ : state) {
      encode_by_loop(text.data());
      benchmark::ClobberMemory();
    }
  });
  bench::contender("uudecode", kInput, bench::kOwn, [](benchmark::State &state) {
    std::vector<char> bytes(kSize);
    benchmark::DoNotOptimize(encoded().data());
    for (auto _ : state) {
      if (zfx_uudecode(encoded().data(), 0, bytes.data(), kSize) != 0) state.SkipWithError("wrong result");
      benchmark::ClobberMemory();
    }
  });
  bench::contender("uudecode", kInput, "byte loop", [](benchmark::State &state) {
    std::vector<char> bytes(kSize);
    benchmark::DoNotOptimize(encoded().data());
    for (auto _ : state) {
      decode_by_loop(encoded().data(), bytes.data());
      benchmark::ClobberMemory();
    }
  });
#ifdef HAVE_SHARUTILS
  add_commands();
#endif
  return true;
}();

}  // namespace
