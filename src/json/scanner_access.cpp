// What a scanner handle can be asked and told.
#include <cstdlib>

#include "scanner.h"
#include "scanner_state.hpp"

void *zjson_get_extra(const zjson_scanner *scanner) {
  return scanner == nullptr ? nullptr : scanner->extra;
}

void zjson_set_extra(void *extra, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->extra = extra;
}

FILE *zjson_get_in(const zjson_scanner *scanner) {
  return scanner == nullptr ? nullptr : scanner->in;
}

void zjson_set_in(FILE *stream, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->in = stream;
}

FILE *zjson_get_out(const zjson_scanner *scanner) {
  return scanner == nullptr ? nullptr : scanner->out;
}

void zjson_set_out(FILE *stream, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->out = stream;
}

int32_t zjson_get_lineno(const zjson_scanner *scanner) {
  return scanner == nullptr || scanner->current() == nullptr ? 0 : scanner->current()->line;
}

void zjson_set_lineno(int32_t line, zjson_scanner *scanner) {
  if (scanner == nullptr) return;
  if (scanner->current() == nullptr) zorvcrt::end_process("yyset_lineno called with no buffer");
  scanner->current()->line = line;
}

int32_t zjson_get_column(const zjson_scanner *scanner) {
  return scanner == nullptr || scanner->current() == nullptr ? 0 : scanner->current()->column;
}

void zjson_set_column(int32_t column, zjson_scanner *scanner) {
  if (scanner == nullptr) return;
  if (scanner->current() == nullptr) zorvcrt::end_process("yyset_column called with no buffer");
  scanner->current()->column = column;
}

int32_t zjson_get_leng(const zjson_scanner *scanner) {
  return scanner == nullptr ? 0 : scanner->length;
}

const char *zjson_get_text(const zjson_scanner *scanner) {
  if (scanner == nullptr) return nullptr;
  return scanner->text == nullptr ? "" : scanner->text;
}

ZJsonSymbolValue *zjson_get_lval(const zjson_scanner *scanner) {
  return scanner == nullptr ? nullptr : scanner->lval;
}

void zjson_set_lval(ZJsonSymbolValue *lval, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->lval = lval;
}

ZJsonLocation *zjson_get_lloc(const zjson_scanner *scanner) {
  return scanner == nullptr ? nullptr : scanner->lloc;
}

void zjson_set_lloc(ZJsonLocation *lloc, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->lloc = lloc;
}

int32_t zjson_get_debug(const zjson_scanner *scanner) {
  return scanner == nullptr ? 0 : scanner->debug;
}

void zjson_set_debug(int32_t debug, zjson_scanner *scanner) {
  if (scanner != nullptr) scanner->debug = debug;
}

void *zjson_alloc(uint64_t size, zjson_scanner * /*scanner*/) {
  return std::malloc(size);
}

void *zjson_realloc(void *block, uint64_t size, zjson_scanner * /*scanner*/) {
  return std::realloc(block, size);
}

void zjson_free(void *block, zjson_scanner * /*scanner*/) {
  std::free(block);
}
