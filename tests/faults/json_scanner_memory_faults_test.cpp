// The JSON scanner without memory: what a scan cannot do without ends the process with a message, as the
// header lists them; everything else gives a result that tells.
#include <cerrno>
#include <cstring>
#include <string>

#include "allocation_walk.hpp"
#include "files.hpp"
#include "json_ends.hpp"
#include "json_names.hpp"
#include "scanner.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::in_child;
using faults::kNoBuffer;
using faults::kNoStack;
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

template <auto kInit>
void make_scanner(Fault &fault) {
  zjson_scanner *handle = nullptr;
  errno = 0;
  const int32_t result = fault.during([&] { return kInit(&handle); });
  const Scanner scanner(handle);
  EXPECT_EQ(result, fault.struck() ? 1 : 0);
  EXPECT_EQ(scanner == nullptr, fault.struck());
  EXPECT_EQ(errno, fault.struck() ? ENOMEM : 0);
  if (scanner != nullptr) expect_scans(scanner.get());
}

constexpr std::string_view kNoScanBuffer = "out of dynamic memory in yy_scan_buffer()\n";
constexpr std::string_view kNoScanBytes = "out of dynamic memory in yy_scan_bytes()\n";

// The call of a new scanner works, or it ends the process with the message or the one of the stack.
template <auto kCall, const std::string_view &kMessage = kNoBuffer>
void end_or_work(Fault &fault) {
  in_child(fault, {kMessage, kNoStack}, [&] {
    const Scanner scanner = new_scanner();
    fault.during([&] { kCall(scanner.get()); });
    EXPECT_FALSE(fault.struck()) << "the scanner goes on without memory that it needs";
    for (int depth = 0; depth < 20; ++depth) {
      zjson_pop_buffer_state(scanner.get());
    }
    expect_scans(scanner.get());
  });
}

void scan_area(zjson_scanner *scanner) {
  static char area[] = "[1]\0";
  EXPECT_NE(zjson__scan_buffer(area, sizeof area, scanner), nullptr);
}

// The call of a new scanner copies a text, or ends the process with one of three messages.
template <auto kScan>
void copy_text(Fault &fault) {
  in_child(fault, {kNoScanBytes, kNoScanBuffer, kNoStack}, [&] {
    const Scanner scanner = new_scanner();
    EXPECT_NE(fault.during([&] { return kScan(scanner.get()); }), nullptr);
  });
}

void restart_behind_text(Fault &fault) {
  in_child(fault, {kNoBuffer}, [&] {
    const Scanner scanner = new_scanner();
    zjson__scan_string("[1]", scanner.get());
    fault.during([&] { zjson_restart(nullptr, scanner.get()); });
  });
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
  in_child(fault, {kNoBuffer, kNoStack, "fatal error - scanner input buffer overflow\n"}, [&] {
    const Scanner scanner = new_scanner();
    FILE *stream = std::fopen(path.c_str(), "r");
    zjson_set_in(stream, scanner.get());
    const int32_t code = fault.during([&] { return zjson_lex(nullptr, nullptr, scanner.get()); });
    EXPECT_EQ(code, ZJSON_TOKEN_STRING);
    EXPECT_EQ(zjson_get_leng(scanner.get()), 50002);
    std::fclose(stream);
  });
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
    {"zjson__create_buffer", "ForAStream", end_or_work<[](zjson_scanner *scanner) {
       zjson__delete_buffer(zjson__create_buffer(nullptr, 100, scanner), scanner);
     }>},
    {"zjson__scan_buffer", "OfTheCaller", end_or_work<scan_area, kNoScanBuffer>},
    {"zjson__scan_bytes", "Copied",
     copy_text<[](zjson_scanner *scanner) { return zjson__scan_bytes("[1]", 3, scanner); }>},
    {"zjson__scan_string", "Copied",
     copy_text<[](zjson_scanner *scanner) { return zjson__scan_string("[1]", scanner); }>},
    {"zjson__switch_to_buffer", "First", end_or_work<[](zjson_scanner *scanner) {
       zjson__switch_to_buffer(zjson__create_buffer(nullptr, 100, scanner), scanner);
     }>},
    {"zjson_alloc", "Block", faults::make<[] { return zjson_alloc(10, nullptr); }, std::free>},
    {"zjson_lex", "String", scan_string_token},
    {"zjson_lex", "LongTokenOfAStream", scan_long_token},
    {"zjson_lex_init", "Handle", make_scanner<zjson_lex_init>},
    {"zjson_lex_init_extra", "Handle",
     make_scanner<[](zjson_scanner **handle) { return zjson_lex_init_extra(nullptr, handle); }>},
    {"zjson_push_buffer_state", "Many", end_or_work<[](zjson_scanner *scanner) {
       for (int depth = 0; depth < 10; ++depth) {
         zjson_push_buffer_state(zjson__create_buffer(nullptr, 100, scanner), scanner);
       }
     }>},
    {"zjson_realloc", "Growing", reallocate_block},
    {"zjson_restart", "WithoutABuffer",
     end_or_work<[](zjson_scanner *scanner) { zjson_restart(nullptr, scanner); }>},
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
