#include "scanner.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "failing_allocator.hpp"
#include "files.hpp"
#include "plain_scanner.hpp"
#include "zfxmemory.h"

namespace {

using namespace plain;

struct Scanner {
  Scanner() { zjson_lex_init(&handle); }
  ~Scanner() { zjson_lex_destroy(handle); }
  Scanner(const Scanner &) = delete;
  Scanner &operator=(const Scanner &) = delete;

  Seen next() {
    ZJsonSymbolValue value = {};
    Seen seen;
    seen.code = zjson_lex(&value, &location, handle);
    seen.text = std::string(zjson_get_text(handle), static_cast<std::size_t>(zjson_get_leng(handle)));
    EXPECT_EQ(zjson_get_text(handle)[zjson_get_leng(handle)], '\0');
    if (seen.code == ZJSON_TOKEN_INTEGER) seen.value = "i" + std::to_string(value.integer);
    if (seen.code == ZJSON_TOKEN_NUMBER) seen.value = "d" + std::to_string(value.number);
    if (seen.code == ZJSON_TOKEN_STRING) {
      seen.value = "s" + std::string(value.string, seen.text.size() - 2);
      EXPECT_EQ(value.string[seen.text.size() - 2], '\0');
      ZfxMemFree(value.string);
    }
    seen.line = location.last_line;
    seen.column = location.last_column;
    return seen;
  }

  zjson_scanner *handle = nullptr;
  ZJsonLocation location = {1, 1, 1, 1};
};

// "INTEGER(5) [ string(a) 'x'": the tokens up to the end.
std::string tokens_of(const std::string &text) {
  static const char *const names[] = {"INTEGER", "NUMBER", "STRING", "true", "false", "null",
                                      "{",       "}",      "[",      "]",    ",",     ":"};
  Scanner scanner;
  zjson__scan_bytes(text.data(), static_cast<int32_t>(text.size()), scanner.handle);
  std::string listing;
  for (Seen seen = scanner.next(); seen.code != 0; seen = scanner.next()) {
    if (!listing.empty()) listing += ' ';
    if (seen.code < 256) {
      listing += "'" + std::string(1, static_cast<char>(seen.code)) + "'";
    } else {
      listing += names[seen.code - 258];
    }
    if (!seen.value.empty()) listing += "(" + seen.value.substr(1) + ")";
  }
  return listing;
}

TEST(zjson_lex, TakesWhiteSpaceIntoTheTokensNextToIt) {
  EXPECT_EQ(tokens_of("{ \"a\" : 1 }"), "{ STRING(a) : INTEGER(1) }");
  EXPECT_EQ(tokens_of("\n{\t\r true \n false\tnull [ ] , 2.5 "), "{ true false null [ ] , NUMBER(2.500000)");
}

TEST(zjson_lex, ReturnsABlankThatNoTokenTakesInAsAByte) {
  EXPECT_EQ(tokens_of("\"a\" \"b\""), "STRING(a) ' ' STRING(b)");
  EXPECT_EQ(tokens_of("\"a\"\t\r#"), "STRING(a) '\t' '\r' '#'");
  EXPECT_EQ(tokens_of("  "), "' ' ' '");
  EXPECT_EQ(tokens_of(" \v\f"), "' ' '\v' '\f'");
}

TEST(zjson_lex, ReadsNumbersByTheLongestMatch) {
  EXPECT_EQ(tokens_of("-0"), "INTEGER(0)");
  EXPECT_EQ(tokens_of("--1"), "'-' INTEGER(-1)");
  EXPECT_EQ(tokens_of("+1.5"), "'+' NUMBER(1.500000)");
  EXPECT_EQ(tokens_of("-1.5E-3"), "NUMBER(-1.500000)");
  EXPECT_EQ(tokens_of("0123"), "INTEGER(0) INTEGER(123)");
  EXPECT_EQ(tokens_of("01.5"), "INTEGER(0) NUMBER(1.500000)");
  EXPECT_EQ(tokens_of("1."), "INTEGER(1) '.'");
  EXPECT_EQ(tokens_of(".5"), "'.' INTEGER(5)");
  EXPECT_EQ(tokens_of("1e"), "INTEGER(1) 'e'");
  EXPECT_EQ(tokens_of("1e+"), "INTEGER(1) 'e' '+'");
  EXPECT_EQ(tokens_of("1.5e"), "NUMBER(1.500000) 'e'");
  EXPECT_EQ(tokens_of("1.5e+"), "NUMBER(1.500000) 'e' '+'");
  EXPECT_EQ(tokens_of("1.5e3 2E2 3e+1"), "NUMBER(1.500000) NUMBER(2.000000) NUMBER(3.000000)");
  EXPECT_EQ(tokens_of("1 2"), "INTEGER(1) INTEGER(2)");
  EXPECT_EQ(tokens_of(" -"), "' ' '-'");
}

TEST(zjson_lex, WrapsIntegersThatDoNotFit) {
  EXPECT_EQ(tokens_of("9223372036854775808"), "INTEGER(-9223372036854775808)");
  EXPECT_EQ(tokens_of("18446744073709551617"), "INTEGER(1)");
}

TEST(zjson_lex, ReadsDigitsOfEveryNumberAndTellsTheirNeighboursFromThem) {
  std::string digits;
  for (int length = 1; length <= 40; ++length) {
    digits += static_cast<char>('0' + (length * 7) % 9 + 1);
    for (const char *end : {"", "/", ":", "\xb0", " ", "."}) {
      const std::string value = std::to_string(intconv_atoi64s(digits.c_str(), 10, 0));
      const std::string rest = *end == '\0' || *end == ' ' ? ""
                               : *end == ':'               ? " :"
                                                           : " '" + std::string(end) + "'";
      EXPECT_EQ(tokens_of(digits + end), "INTEGER(" + value + ")" + rest);
    }
  }
}

TEST(zjson_lex, CountsAnIntegerBehindALineEndAsZero) {
  EXPECT_EQ(tokens_of(" \t5"), "INTEGER(5)");
  EXPECT_EQ(tokens_of("\n5"), "INTEGER(0)");
  EXPECT_EQ(tokens_of("\r5"), "INTEGER(0)");
  EXPECT_EQ(tokens_of("\n5.5"), "NUMBER(5.500000)");
}

TEST(zjson_lex, ReadsStringsOfEitherQuote) {
  EXPECT_EQ(tokens_of("'it''s'"), "STRING(it) STRING(s)");
  EXPECT_EQ(tokens_of("\"it's\"'\"'"), "STRING(it's) STRING(\")");
  EXPECT_EQ(tokens_of("\"\"''"), "STRING() STRING()");
}

TEST(zjson_lex, DecodesNothingInAString) {
  EXPECT_EQ(tokens_of("\"a\\\"b\""), "STRING(a\\\"b)");
  EXPECT_EQ(tokens_of("\"a\\\"b\"c\""), "STRING(a\\\"b) 'c' '\"'");
  EXPECT_EQ(tokens_of("\"\\u0041\\n\\q\""), "STRING(\\u0041\\n\\q)");
  EXPECT_EQ(tokens_of("\"a\nb\x01\xc3\xa9\""), "STRING(a\nb\x01\xc3\xa9)");
}

TEST(zjson_lex, EndsAStringByTheLongestMatch) {
  EXPECT_EQ(tokens_of("\"\\\""), "STRING(\\)");
  EXPECT_EQ(tokens_of("\"\\\\\",\"a\""), "STRING(\\\\\",) 'a' '\"'")
      << "a quote behind a backslash can go on";
  EXPECT_EQ(tokens_of("\"a\\\" \\\" b"), "STRING(a\\\" \\) ' ' 'b'")
      << "and ends at the last that can end it";
}

TEST(zjson_lex, ReturnsAQuoteThatNothingClosesAsAByte) {
  EXPECT_EQ(tokens_of("\"ab"), "'\"' 'a' 'b'");
  EXPECT_EQ(tokens_of("'\"1\""), "''' STRING(1)");
}

TEST(zjson_lex, NeedsNoWordBoundary) {
  EXPECT_EQ(tokens_of("truex"), "true 'x'");
  EXPECT_EQ(tokens_of("nulltrue"), "null true");
  EXPECT_EQ(tokens_of("1true"), "INTEGER(1) true");
}

TEST(zjson_lex, ReturnsEverythingElseByteByByte) {
  EXPECT_EQ(tokens_of("TRUE"), "'T' 'R' 'U' 'E'");
  EXPECT_EQ(tokens_of("nul"), "'n' 'u' 'l'");
  EXPECT_EQ(tokens_of("//#@"), "'/' '/' '#' '@'");
}

TEST(zjson_lex, ReturnsBytesAbove127AsNegativeCodes) {
  Scanner scanner;
  zjson__scan_string("\x80\xff", scanner.handle);
  EXPECT_EQ(scanner.next().code, -128);
  EXPECT_EQ(scanner.next().code, -1);
  EXPECT_EQ(scanner.next().code, 0);
}

TEST(zjson_lex, ReturnsAZeroByteAsTheEndAndGoesOnBehindIt) {
  const char text[] = "1\0 2\"a\0b\"";
  Scanner scanner;
  zjson__scan_bytes(text, sizeof text - 1, scanner.handle);
  EXPECT_EQ(scanner.next().code, ZJSON_TOKEN_INTEGER);
  EXPECT_EQ(scanner.next(), (Seen{0, std::string(1, '\0'), "", 1, 3})) << "a byte moves the place";
  EXPECT_EQ(scanner.next().value, "i2");
  EXPECT_EQ(scanner.next().value, std::string("sa\0b", 4));
  EXPECT_EQ(scanner.next(), (Seen{0, "", "", 1, 10})) << "the end does not";
}

TEST(zjson_lex, CountsColumnsFromOneAtFirstAndFromZeroBehindALineFeed) {
  Scanner scanner;
  zjson__scan_string("[\n1,\"a\nb\"]", scanner.handle);
  EXPECT_EQ(scanner.next(), (Seen{ZJSON_TOKEN_ARRAY_BEGIN, "[\n", "", 2, 0}));
  EXPECT_EQ(scanner.location.first_line, 1);
  EXPECT_EQ(scanner.location.first_column, 1);
  EXPECT_EQ(scanner.next(), (Seen{ZJSON_TOKEN_INTEGER, "1", "i1", 2, 1}));
  EXPECT_EQ(scanner.location.first_line, 2);
  EXPECT_EQ(scanner.location.first_column, 0);
  scanner.next();
  EXPECT_EQ(scanner.next(), (Seen{ZJSON_TOKEN_STRING, "\"a\nb\"", "sa\nb", 3, 2}));
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 3);
}

TEST(zjson_lex, GoesOnFromThePlaceThatTheCallerGives) {
  Scanner scanner;
  zjson__scan_string("1,2", scanner.handle);
  scanner.location = {0, 0, INT32_MAX, INT32_MAX};
  EXPECT_EQ(scanner.next().column, INT32_MIN) << "wraps";
  scanner.location = {9, 9, 5, 7};
  EXPECT_EQ(scanner.next(), (Seen{ZJSON_TOKEN_COMMA, ",", "", 5, 8}));
  EXPECT_EQ(zjson_lex(nullptr, nullptr, scanner.handle), ZJSON_TOKEN_INTEGER);
}

TEST(zjson_lex, LeavesAStringWithoutAReceiverAlone) {
  Scanner scanner;
  zjson__scan_string("'a'", scanner.handle);
  EXPECT_EQ(zjson_lex(nullptr, nullptr, scanner.handle), ZJSON_TOKEN_STRING);
}

TEST(zjson_get_lineno, CountsTheLineFeedsOfTheTableTokensOnly) {
  Scanner scanner;
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 0);
  EXPECT_EQ(zjson_get_column(scanner.handle), 0);
  zjson__scan_string("[\n\n1 #", scanner.handle);
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 1);
  zjson_set_column(7, scanner.handle);
  zjson_set_lineno(10, scanner.handle);
  EXPECT_EQ(zjson_get_column(scanner.handle), 7);
  scanner.next();
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 12);
  EXPECT_EQ(zjson_get_column(scanner.handle), 0);
  zjson_set_column(5, scanner.handle);
  scanner.next();
  scanner.next();
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 12);
  EXPECT_EQ(zjson_get_column(scanner.handle), 5);
}

// Compares token by token, up to the end or to a jam, which the scanner must not be driven into here.
void expect_same_tokens(const std::string &text, Scanner &scanner) {
  PlainScanner plain{text};
  for (;;) {
    const Seen expected = plain.next();
    if (expected.code == kJam) return;
    ASSERT_EQ(scanner.next(), expected) << testing::PrintToString(text);
    if (expected.code == 0 && expected.text.empty()) return;
  }
}

TEST(zjson_lex, AgreesWithThePlainRulesOnRandomTextsInMemory) {
  std::mt19937 random(11);
  for (int round = 0; round < 60000; ++round) {
    const std::string text = random_text(random, 24);
    Scanner scanner;
    zjson__scan_bytes(text.data(), static_cast<int32_t>(text.size()), scanner.handle);
    expect_same_tokens(text, scanner);
    if (HasFatalFailure()) return;
  }
}

struct Stream {
  explicit Stream(const std::string &text) : file(std::tmpfile()) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
  }
  ~Stream() { std::fclose(file); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;
  FILE *file;
};

TEST(zjson_lex, AgreesWithThePlainRulesOnRandomStreamsThroughSmallBuffers) {
  std::mt19937 random(12);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = random_text(random, 24);
    const Stream stream(text);
    Scanner scanner;
    zjson__switch_to_buffer(
        zjson__create_buffer(stream.file, static_cast<int32_t>(1 + random() % 40), scanner.handle),
        scanner.handle);
    expect_same_tokens(text, scanner);
    if (HasFatalFailure()) return;
  }
}

TEST(zjson_lex, ReadsTokensAcrossTheBlocksOfAStream) {
  std::mt19937 random(13);
  for (int round = 0; round < 12; ++round) {
    std::string text;
    while (text.size() < 60000)
      text += random_text(random, 12) + (random() % 8 == 0 ? std::string(random() % 20000, ' ') : ",") +
              (random() % 8 == 0 ? "'" + std::string(random() % 30000, 'x') + "'" : "1");
    // A line feed that no token takes in would end the process.
    for (char &c : text)
      if (c == '\n') c = '\r';
    const Stream stream(text);
    Scanner scanner;
    zjson_set_in(stream.file, scanner.handle);
    expect_same_tokens(text, scanner);
    if (HasFatalFailure()) return;
  }
}

TEST(zjson_lex, TakesLinearTimeForAStringOfManyBlocks) {
  const std::string text = "\"" + std::string(20000000, 'x') + "\"";
  const Stream stream(text);
  Scanner scanner;
  zjson_set_in(stream.file, scanner.handle);
  EXPECT_EQ(scanner.next().text.size(), text.size());
  EXPECT_EQ(scanner.next().code, 0);
}

TEST(zjson_lex, ReadsStandardInputWhenNothingIsSet) {
  Scanner scanner;
  EXPECT_EQ(zjson_get_in(scanner.handle), nullptr);
  EXPECT_EQ(zjson_get_out(scanner.handle), nullptr);
  const Stream stream("[1]");
  const int saved = ::dup(0);
  ::dup2(::fileno(stream.file), 0);
  EXPECT_EQ(scanner.next().code, ZJSON_TOKEN_ARRAY_BEGIN);
  EXPECT_EQ(zjson_get_in(scanner.handle), stdin);
  EXPECT_EQ(zjson_get_out(scanner.handle), stdout);
  ::dup2(saved, 0);
  ::close(saved);
}

TEST(zjson_lex, AsksAStreamAgainAfterItsEnd) {
  const Stream stream("1");
  Scanner scanner;
  zjson_set_in(stream.file, scanner.handle);
  EXPECT_EQ(scanner.next().value, "i1");
  EXPECT_EQ(scanner.next().code, 0);
  std::fputs("2", stream.file);
  std::fseek(stream.file, 1, SEEK_SET);
  EXPECT_EQ(scanner.next().value, "i2");
  EXPECT_EQ(scanner.next().code, 0);
}

TEST(zjson_lex, ReadsAtMostOneBlockAheadOfAShortToken) {
  const Stream stream(std::string(40000, ','));
  Scanner scanner;
  zjson_set_in(stream.file, scanner.handle);
  scanner.next();
  EXPECT_EQ(std::ftell(stream.file), 8192);
}

TEST(zjson_lex_init, RefusesANullAddress) {
  errno = 0;
  EXPECT_EQ(zjson_lex_init(nullptr), 1);
  EXPECT_EQ(errno, EINVAL);
  errno = 0;
  EXPECT_EQ(zjson_lex_init_extra(&errno, nullptr), 1);
  EXPECT_EQ(errno, EINVAL);
}

TEST(zjson_lex_init, ReportsThatMemoryHasRunOut) {
  zjson_scanner *scanner = nullptr;
  const support::FailingAllocator failing(1);
  errno = 0;
  EXPECT_EQ(zjson_lex_init(&scanner), 1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(scanner, nullptr);
}

TEST(zjson_lex_init_extra, KeepsTheDatum) {
  int datum = 0;
  zjson_scanner *scanner = nullptr;
  EXPECT_EQ(zjson_lex_init_extra(&datum, &scanner), 0);
  EXPECT_EQ(zjson_get_extra(scanner), &datum);
  zjson_set_extra(scanner, scanner);
  EXPECT_EQ(zjson_get_extra(scanner), scanner);
  EXPECT_EQ(zjson_lex_destroy(scanner), 0);
}

TEST(zjson_scanner, KeepsWhatItIsTold) {
  Scanner scanner;
  zjson_set_in(stderr, scanner.handle);
  zjson_set_out(stderr, scanner.handle);
  zjson_set_debug(5, scanner.handle);
  ZJsonSymbolValue value;
  ZJsonLocation location;
  zjson_set_lval(&value, scanner.handle);
  zjson_set_lloc(&location, scanner.handle);
  EXPECT_EQ(zjson_get_in(scanner.handle), stderr);
  EXPECT_EQ(zjson_get_out(scanner.handle), stderr);
  EXPECT_EQ(zjson_get_debug(scanner.handle), 5);
  EXPECT_EQ(zjson_get_lval(scanner.handle), &value);
  EXPECT_EQ(zjson_get_lloc(scanner.handle), &location);
  zjson__scan_string("", scanner.handle);
  zjson_lex(nullptr, &location, scanner.handle);
  EXPECT_EQ(zjson_get_lval(scanner.handle), nullptr);
  EXPECT_EQ(zjson_get_lloc(scanner.handle), &location);
}

TEST(zjson_scanner, ToleratesANullHandle) {
  ZJsonLocation location = {1, 2, 3, 4};
  EXPECT_EQ(zjson_lex(nullptr, &location, nullptr), 0);
  EXPECT_EQ(zjson_lex_destroy(nullptr), 0);
  EXPECT_EQ(zjson__scan_bytes("a", 1, nullptr), nullptr);
  EXPECT_EQ(zjson__scan_string("a", nullptr), nullptr);
  char area[4] = "";
  EXPECT_EQ(zjson__scan_buffer(area, 4, nullptr), nullptr);
  EXPECT_EQ(zjson__create_buffer(stdin, 10, nullptr), nullptr);
  zjson__switch_to_buffer(nullptr, nullptr);
  zjson__delete_buffer(nullptr, nullptr);
  zjson__flush_buffer(nullptr, nullptr);
  zjson_push_buffer_state(nullptr, nullptr);
  zjson_pop_buffer_state(nullptr);
  zjson_restart(nullptr, nullptr);
  zjson_set_extra(nullptr, nullptr);
  zjson_set_in(nullptr, nullptr);
  zjson_set_out(nullptr, nullptr);
  zjson_set_lineno(1, nullptr);
  zjson_set_column(1, nullptr);
  zjson_set_lval(nullptr, nullptr);
  zjson_set_lloc(nullptr, nullptr);
  zjson_set_debug(1, nullptr);
  EXPECT_EQ(zjson_get_extra(nullptr), nullptr);
  EXPECT_EQ(zjson_get_in(nullptr), nullptr);
  EXPECT_EQ(zjson_get_out(nullptr), nullptr);
  EXPECT_EQ(zjson_get_lineno(nullptr), 0);
  EXPECT_EQ(zjson_get_column(nullptr), 0);
  EXPECT_EQ(zjson_get_leng(nullptr), 0);
  EXPECT_EQ(zjson_get_text(nullptr), nullptr);
  EXPECT_EQ(zjson_get_lval(nullptr), nullptr);
  EXPECT_EQ(zjson_get_lloc(nullptr), nullptr);
  EXPECT_EQ(zjson_get_debug(nullptr), 0);
}

TEST(zjson_scan_bytes, CopiesTheBytes) {
  char text[] = "[1]";
  Scanner scanner;
  zjson_buffer *copy = zjson__scan_bytes(text, 3, scanner.handle);
  std::memset(text, 'x', 3);
  EXPECT_EQ(scanner.next().code, ZJSON_TOKEN_ARRAY_BEGIN);
  zjson__delete_buffer(copy, scanner.handle);
  zjson__scan_bytes(nullptr, 5, scanner.handle);
  EXPECT_EQ(scanner.next().code, 0);
}

TEST(zjson_scan_bytes, TakesANegativeLengthAsNone) {
  Scanner scanner;
  for (const int32_t length : {-1, -2, -3, INT32_MIN}) {
    zjson_buffer *buffer = zjson__scan_bytes("[1]", length, scanner.handle);
    EXPECT_EQ(scanner.next().code, 0);
    zjson__delete_buffer(buffer, scanner.handle);
  }
}

TEST(zjson_scan_buffer, ScansInPlaceAndLeavesTheAreaAsItWas) {
  char area[] = "[12]\0";
  const std::string before(area, sizeof area);
  Scanner scanner;
  EXPECT_NE(zjson__scan_buffer(area, sizeof area, scanner.handle), nullptr);
  EXPECT_EQ(scanner.next().text, "[");
  EXPECT_EQ(scanner.next().text, "12");
  EXPECT_EQ(zjson_get_text(scanner.handle), area + 1);
  zjson_pop_buffer_state(scanner.handle);
  EXPECT_EQ(std::string(area, sizeof area), before);
}

TEST(zjson_scan_buffer, RefusesAnAreaThatDoesNotEndInTwoZeros) {
  Scanner scanner;
  char area[] = "ab";
  EXPECT_EQ(zjson__scan_buffer(area, 3, scanner.handle), nullptr);
  EXPECT_EQ(zjson__scan_buffer(area + 2, 1, scanner.handle), nullptr);
  EXPECT_EQ(zjson__scan_buffer(area, 0, scanner.handle), nullptr);
  EXPECT_EQ(zjson__scan_buffer(nullptr, 5, scanner.handle), nullptr);
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 0) << "no buffer came to be";
}

TEST(zjson_buffers, FormAStack) {
  Scanner scanner;
  zjson__scan_string("1 2", scanner.handle);
  EXPECT_EQ(scanner.next().value, "i1");
  Scanner other;
  zjson_buffer *inner = zjson__scan_string("8 9", other.handle);
  zjson_buffer *spare = zjson__create_buffer(stdin, 100, other.handle);
  zjson__switch_to_buffer(spare, other.handle);
  zjson_push_buffer_state(inner, scanner.handle);
  EXPECT_EQ(scanner.next().value, "i8");
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 1);
  zjson_pop_buffer_state(scanner.handle);
  EXPECT_EQ(scanner.next().value, "i2");
  zjson_pop_buffer_state(scanner.handle);
  zjson_pop_buffer_state(scanner.handle);
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 0);
}

TEST(zjson_buffers, MayBePushedOftenAndReleasedAnywhere) {
  Scanner scanner;
  std::vector<zjson_buffer *> buffers;
  const Stream stream("[");
  for (int i = 0; i < 100; ++i) {
    buffers.push_back(zjson__create_buffer(stream.file, 0, scanner.handle));
    zjson_push_buffer_state(buffers.back(), scanner.handle);
  }
  zjson_push_buffer_state(buffers[50], scanner.handle);
  zjson__delete_buffer(buffers[50], scanner.handle);
  zjson__delete_buffer(buffers[98], scanner.handle);
  zjson_pop_buffer_state(scanner.handle);
  EXPECT_EQ(scanner.next().code, ZJSON_TOKEN_ARRAY_BEGIN);
  zjson_pop_buffer_state(scanner.handle);
  zjson_pop_buffer_state(scanner.handle);
  EXPECT_NE(zjson_get_lineno(scanner.handle), 0);
}

TEST(zjson_switch_to_buffer, ComesBackToWhereABufferWas) {
  Scanner scanner;
  zjson_buffer *first = zjson__scan_string("1 2", scanner.handle);
  EXPECT_EQ(scanner.next().value, "i1");
  zjson_buffer *second = zjson__scan_string("8 9", scanner.handle);
  EXPECT_EQ(scanner.next().value, "i8");
  zjson__switch_to_buffer(first, scanner.handle);
  zjson__switch_to_buffer(first, scanner.handle);
  EXPECT_EQ(scanner.next().value, "i2");
  zjson__delete_buffer(second, scanner.handle);
}

TEST(zjson_flush_buffer, ForgetsWhatWaits) {
  const Stream stream("1,2,3");
  Scanner scanner;
  zjson_buffer *buffer = zjson__create_buffer(stream.file, 100, scanner.handle);
  zjson__switch_to_buffer(buffer, scanner.handle);
  EXPECT_EQ(scanner.next().value, "i1");
  zjson__flush_buffer(buffer, scanner.handle);
  EXPECT_EQ(scanner.next().code, 0);
  zjson_buffer *bytes = zjson__scan_string("5", scanner.handle);
  zjson__flush_buffer(bytes, scanner.handle);
  EXPECT_EQ(scanner.next().code, 0);
  zjson__delete_buffer(buffer, scanner.handle);
}

TEST(zjson_restart, ReadsAStreamFromItsBeginning) {
  const Stream first("1,2");
  const Stream second("[\n7");
  Scanner scanner;
  zjson_set_in(first.file, scanner.handle);
  EXPECT_EQ(scanner.next().value, "i1");
  zjson_restart(second.file, scanner.handle);
  EXPECT_EQ(scanner.next().code, ZJSON_TOKEN_ARRAY_BEGIN);
  EXPECT_EQ(scanner.next().value, "i7");
  EXPECT_EQ(zjson_get_lineno(scanner.handle), 2);
  Scanner fresh;
  const Stream third("9");
  zjson_restart(third.file, fresh.handle);
  EXPECT_EQ(fresh.next().value, "i9");
  Scanner bytes;
  const Stream fourth("'" + std::string(20000, 'x') + "'");
  zjson__scan_string("4", bytes.handle);
  zjson_restart(fourth.file, bytes.handle);
  EXPECT_EQ(bytes.next().text.size(), 20002U);
}

TEST(zjson_alloc, IsThePlainHeap) {
  Scanner scanner;
  void *block = zjson_alloc(10, scanner.handle);
  ASSERT_NE(block, nullptr);
  block = zjson_realloc(block, 100, nullptr);
  ASSERT_NE(block, nullptr);
  zjson_free(block, scanner.handle);
  const support::FailingAllocator failing(1);
  EXPECT_EQ(zjson_alloc(10, scanner.handle), nullptr);
}

void scan_all(const char *text) {
  Scanner scanner;
  zjson__scan_string(text, scanner.handle);
  while (scanner.next().code != 0) {
  }
  std::exit(0);
}

TEST(zjson_lexDeathTest, EndsTheProcessAtALineFeedThatNoTokenTakesIn) {
  EXPECT_EXIT(scan_all("[\"a\"\n\"b\"]"), ::testing::ExitedWithCode(2), "^flex scanner jammed\n$");
  EXPECT_EXIT(scan_all("\n"), ::testing::ExitedWithCode(2), "^flex scanner jammed\n$");
  EXPECT_EXIT(scan_all("\"a\" \n"), ::testing::ExitedWithCode(2), "^flex scanner jammed\n$");
  EXPECT_EXIT(scan_all("\"a\"\n]"), ::testing::ExitedWithCode(0), "^$");
}

void scan_stream(FILE *stream) {
  Scanner scanner;
  zjson_set_in(stream, scanner.handle);
  scanner.next();
  std::exit(0);
}

TEST(zjson_lexDeathTest, EndsTheProcessWhenAStreamCannotBeRead) {
  const support::TemporaryFolder folder;
  FILE *unreadable = std::fopen(folder.path().c_str(), "r");
  ASSERT_NE(unreadable, nullptr);
  EXPECT_EXIT(scan_stream(unreadable), ::testing::ExitedWithCode(2), "^input in flex scanner failed\n$");
  std::fclose(unreadable);
}

TEST(zjson_set_linenoDeathTest, EndsTheProcessWithoutABuffer) {
  Scanner scanner;
  EXPECT_EXIT(zjson_set_lineno(1, scanner.handle), ::testing::ExitedWithCode(2),
              "^yyset_lineno called with no buffer\n$");
  EXPECT_EXIT(zjson_set_column(1, scanner.handle), ::testing::ExitedWithCode(2),
              "^yyset_column called with no buffer\n$");
}

template <class Call>
void call_without_memory(std::size_t n, Call call) {
  Scanner scanner;
  const support::FailingAllocator failing(n, true);
  call(scanner.handle);
  std::exit(0);
}

TEST(zjson_scannerDeathTest, EndsTheProcessWhenMemoryRunsOut) {
  const auto exits = ::testing::ExitedWithCode(2);
  const auto bytes = [](zjson_scanner *scanner) { zjson__scan_bytes("[1]", 3, scanner); };
  EXPECT_EXIT(call_without_memory(1, bytes), exits, "^out of dynamic memory in yy_scan_bytes\\(\\)\n$");
  EXPECT_EXIT(call_without_memory(2, bytes), exits, "^out of dynamic memory in yy_scan_buffer\\(\\)\n$");
  EXPECT_EXIT(call_without_memory(3, bytes), exits,
              "^out of dynamic memory in yyensure_buffer_stack\\(\\)\n$");
  const auto create = [](zjson_scanner *scanner) { zjson__create_buffer(stdin, 10, scanner); };
  EXPECT_EXIT(call_without_memory(1, create), exits, "^out of dynamic memory in yy_create_buffer\\(\\)\n$");
  EXPECT_EXIT(call_without_memory(2, create), exits, "^out of dynamic memory in yy_create_buffer\\(\\)\n$");
}

void scan_long_token_without_memory(FILE *stream) {
  Scanner scanner;
  zjson__switch_to_buffer(zjson__create_buffer(stream, 10, scanner.handle), scanner.handle);
  const support::LimitedAllocator limited(64);
  zjson_lex(nullptr, nullptr, scanner.handle);
  std::exit(0);
}

TEST(zjson_scannerDeathTest, EndsTheProcessWhenATokenFindsNoSpace) {
  const Stream stream("'" + std::string(1000, 'x') + "'");
  std::getc(stream.file);
  std::rewind(stream.file);  // the stream has its own buffer by now
  EXPECT_EXIT(scan_long_token_without_memory(stream.file), ::testing::ExitedWithCode(2),
              "^fatal error - scanner input buffer overflow\n$");
}

TEST(zjson_lex, GivesANullStringWhenMemoryRunsOut) {
  Scanner scanner;
  zjson__scan_string("'a'", scanner.handle);
  const support::FailingAllocator failing(1);
  ZJsonSymbolValue value = {};
  EXPECT_EQ(zjson_lex(&value, nullptr, scanner.handle), ZJSON_TOKEN_STRING);
  EXPECT_EQ(value.string, nullptr);
}

}  // namespace
