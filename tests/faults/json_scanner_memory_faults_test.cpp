// The JSON scanner without memory: what a scan cannot do without ends the process with a message, as the
// header lists them; everything else gives a result that tells.
#include <cerrno>
#include <cstring>
#include <string>

#include "allocation_walk.hpp"
#include "files.hpp"
#include "json_names.hpp"
#include "process_end.hpp"
#include "scanner.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::Owner;
using faults::QuietCall;
using faults::Text;

using Scanner = Owner<zjson_scanner, zjson_lex_destroy>;

Scanner new_scanner() {
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  return Scanner(scanner);
}

void expect_scans(zjson_scanner *scanner) {
  zjson__scan_string("[", scanner);
  EXPECT_EQ(zjson_lex(nullptr, nullptr, scanner), ZJSON_TOKEN_ARRAY_BEGIN);
}

using Init = int32_t (*)(zjson_scanner **);

void make_scanner(Fault &fault, Init init) {
  zjson_scanner *handle = nullptr;
  errno = 0;
  const int32_t result = fault.during([&] { return init(&handle); });
  const Scanner scanner(handle);
  EXPECT_EQ(result, fault.struck() ? 1 : 0);
  EXPECT_EQ(scanner == nullptr, fault.struck());
  EXPECT_EQ(errno, fault.struck() ? ENOMEM : 0);
  if (scanner != nullptr) expect_scans(scanner.get());
}

void make_plain_scanner(Fault &fault) {
  make_scanner(fault, zjson_lex_init);
}

void make_scanner_with_datum(Fault &fault) {
  make_scanner(fault, [](zjson_scanner **handle) { return zjson_lex_init_extra(nullptr, handle); });
}

// Makes the call in a child: it works, or it ends the process with the message or the one of the stack.
template <class Call>
void ends_or_works(Fault &fault, const std::string &message, Call call) {
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        const long before = support::live_blocks();
        {
          const Scanner scanner = new_scanner();
          fault.during([&] { call(scanner.get()); });
          EXPECT_FALSE(fault.struck()) << "the scanner goes on without memory that it needs";
          for (int depth = 0; depth < 20; ++depth) {
            zjson_pop_buffer_state(scanner.get());
          }
          expect_scans(scanner.get());
        }
        EXPECT_EQ(support::live_blocks(), before) << "blocks are left behind";
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (end.returned) return;
  EXPECT_EQ(end.status, 2);
  EXPECT_TRUE(end.errors == message + "\n" ||
              end.errors == "out of dynamic memory in yyensure_buffer_stack()\n")
      << end.errors;
}

constexpr char kCreate[] = "out of dynamic memory in yy_create_buffer()";
constexpr char kScanBuffer[] = "out of dynamic memory in yy_scan_buffer()";
constexpr char kScanBytes[] = "out of dynamic memory in yy_scan_bytes()";

void create_buffer(Fault &fault) {
  ends_or_works(fault, kCreate, [](zjson_scanner *scanner) {
    zjson__delete_buffer(zjson__create_buffer(nullptr, 100, scanner), scanner);
  });
}

void scan_area(Fault &fault) {
  static char area[] = "[1]\0";
  ends_or_works(fault, kScanBuffer, [](zjson_scanner *scanner) {
    EXPECT_NE(zjson__scan_buffer(area, sizeof area, scanner), nullptr);
  });
}

void expect_one_of_two(Fault &fault, zjson_buffer *(*scan)(zjson_scanner *)) {
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        const Scanner scanner = new_scanner();
        EXPECT_NE(fault.during([&] { return scan(scanner.get()); }), nullptr);
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (end.returned) return;
  EXPECT_EQ(end.status, 2);
  const bool is_listed = end.errors == std::string(kScanBytes) + "\n" ||
                         end.errors == std::string(kScanBuffer) + "\n" ||
                         end.errors == "out of dynamic memory in yyensure_buffer_stack()\n";
  EXPECT_TRUE(is_listed) << end.errors;
}

void scan_bytes(Fault &fault) {
  expect_one_of_two(fault, [](zjson_scanner *scanner) { return zjson__scan_bytes("[1]", 3, scanner); });
}

void scan_string(Fault &fault) {
  expect_one_of_two(fault, [](zjson_scanner *scanner) { return zjson__scan_string("[1]", scanner); });
}

void switch_to_buffer(Fault &fault) {
  ends_or_works(fault, kCreate, [](zjson_scanner *scanner) {
    zjson__switch_to_buffer(zjson__create_buffer(nullptr, 100, scanner), scanner);
  });
}

void push_buffer(Fault &fault) {
  ends_or_works(fault, kCreate, [](zjson_scanner *scanner) {
    for (int depth = 0; depth < 10; ++depth) {
      zjson_push_buffer_state(zjson__create_buffer(nullptr, 100, scanner), scanner);
    }
  });
}

void restart_without_buffer(Fault &fault) {
  ends_or_works(fault, kCreate, [](zjson_scanner *scanner) { zjson_restart(nullptr, scanner); });
}

void restart_behind_text(Fault &fault) {
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        const Scanner scanner = new_scanner();
        zjson__scan_string("[1]", scanner.get());
        fault.during([&] { zjson_restart(nullptr, scanner.get()); });
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (!end.returned) {
    EXPECT_EQ(end.errors, std::string(kCreate) + "\n");
  }
}

// A string whose value cannot be had is told by its code all the same, and the scan goes on behind it.
void scan_string_token(Fault &fault) {
  const Scanner scanner = new_scanner();
  zjson__scan_string("\"text\",", scanner.get());
  ZJsonSymbolValue value = {};
  const int32_t code = fault.during([&] { return zjson_lex(&value, nullptr, scanner.get()); });
  const Text text(value.string);
  EXPECT_EQ(code, ZJSON_TOKEN_STRING);
  EXPECT_EQ(text != nullptr, !fault.struck());
  EXPECT_STREQ(zjson_get_text(scanner.get()), "\"text\"");
  EXPECT_EQ(zjson_lex(nullptr, nullptr, scanner.get()), ZJSON_TOKEN_COMMA);
}

// A token that is longer than the buffer, from a stream.
void scan_long_token(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "long";
  support::write_file(path, "\"" + std::string(50000, 'x') + "\"");
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        const Scanner scanner = new_scanner();
        FILE *stream = std::fopen(path.c_str(), "r");
        zjson_set_in(stream, scanner.get());
        const int32_t code = fault.during([&] { return zjson_lex(nullptr, nullptr, scanner.get()); });
        EXPECT_EQ(code, ZJSON_TOKEN_STRING);
        EXPECT_EQ(zjson_get_leng(scanner.get()), 50002);
        std::fclose(stream);
      },
      [&] { return fault.struck(); });
  fault.note_struck(end.struck);
  if (end.returned) return;
  EXPECT_EQ(end.status, 2);
  const bool is_listed = end.errors == std::string(kCreate) + "\n" ||
                         end.errors == "fatal error - scanner input buffer overflow\n" ||
                         end.errors == "out of dynamic memory in yyensure_buffer_stack()\n";
  EXPECT_TRUE(is_listed) << end.errors;
}

void allocate_block(Fault &fault) {
  const Text block(fault.during([] { return static_cast<char *>(zjson_alloc(10, nullptr)); }));
  EXPECT_EQ(block != nullptr, !fault.struck());
}

void reallocate_block(Fault &fault) {
  Text block(static_cast<char *>(zjson_alloc(10, nullptr)));
  void *moved = fault.during([&] { return zjson_realloc(block.get(), 100000, nullptr); });
  EXPECT_EQ(moved != nullptr, !fault.struck());
  if (moved == nullptr) return;
  static_cast<void>(block.release());
  block.reset(static_cast<char *>(moved));
}

constexpr FaultedCall kFaulted[] = {
    {"zjson__create_buffer", "ForAStream", create_buffer},
    {"zjson__scan_buffer", "OfTheCaller", scan_area},
    {"zjson__scan_bytes", "Copied", scan_bytes},
    {"zjson__scan_string", "Copied", scan_string},
    {"zjson__switch_to_buffer", "First", switch_to_buffer},
    {"zjson_alloc", "Block", allocate_block},
    {"zjson_lex", "String", scan_string_token},
    {"zjson_lex", "LongTokenOfAStream", scan_long_token},
    {"zjson_lex_init", "Handle", make_plain_scanner},
    {"zjson_lex_init_extra", "Handle", make_scanner_with_datum},
    {"zjson_push_buffer_state", "Many", push_buffer},
    {"zjson_realloc", "Growing", reallocate_block},
    {"zjson_restart", "WithoutABuffer", restart_without_buffer},
    {"zjson_restart", "BehindAText", restart_behind_text},
};

// Made once, so that the calls below need no memory of their own.
Scanner sample;

const QuietCall kQuiet[] = {
    {"zjson__delete_buffer", [] { zjson__delete_buffer(nullptr, sample.get()); }},
    {"zjson__flush_buffer", [] { zjson__flush_buffer(nullptr, sample.get()); }},
    {"zjson_free", [] { zjson_free(nullptr, sample.get()); }},
    {"zjson_get_column", [] { zjson_get_column(sample.get()); }},
    {"zjson_get_debug", [] { zjson_get_debug(sample.get()); }},
    {"zjson_get_extra", [] { zjson_get_extra(sample.get()); }},
    {"zjson_get_in", [] { zjson_get_in(sample.get()); }},
    {"zjson_get_leng", [] { zjson_get_leng(sample.get()); }},
    {"zjson_get_lineno", [] { zjson_get_lineno(sample.get()); }},
    {"zjson_get_lloc", [] { zjson_get_lloc(sample.get()); }},
    {"zjson_get_lval", [] { zjson_get_lval(sample.get()); }},
    {"zjson_get_out", [] { zjson_get_out(sample.get()); }},
    {"zjson_get_text", [] { zjson_get_text(sample.get()); }},
    {"zjson_lex_destroy", [] { zjson_lex_destroy(nullptr); }},
    {"zjson_pop_buffer_state", [] { zjson_pop_buffer_state(sample.get()); }},
    {"zjson_set_column", [] { zjson_set_column(1, sample.get()); }},
    {"zjson_set_debug", [] { zjson_set_debug(1, sample.get()); }},
    {"zjson_set_extra", [] { zjson_set_extra(nullptr, sample.get()); }},
    {"zjson_set_in", [] { zjson_set_in(nullptr, sample.get()); }},
    {"zjson_set_lineno", [] { zjson_set_lineno(1, sample.get()); }},
    {"zjson_set_lloc", [] { zjson_set_lloc(nullptr, sample.get()); }},
    {"zjson_set_lval", [] { zjson_set_lval(nullptr, sample.get()); }},
    {"zjson_set_out", [] { zjson_set_out(nullptr, sample.get()); }},
};

struct ScannerWithoutMemory : ::testing::TestWithParam<FaultedCall> {};

TEST_P(ScannerWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ScannerWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct ScannerFrugal : ::testing::TestWithParam<QuietCall> {
  void SetUp() override {
    sample = new_scanner();
    zjson__scan_string("[1]", sample.get());
  }
  void TearDown() override { sample.reset(); }
};

TEST_P(ScannerFrugal, TakesNoMemory) {
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, ScannerFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(ScannerMemoryFaults, NameEveryExportOfTheScanner) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::json_names(true));
}

}  // namespace
