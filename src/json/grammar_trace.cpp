// The trace of a parse on standard error.
#include "grammar_trace.hpp"

namespace zorvcrt {

namespace {

// First line and column, and the end only where it differs: the last line too when it is another one. The
// last column is one that the symbol still covers.
void trace_place(const ZJsonLocation &place) {
  const int32_t end_column = place.last_column != 0 ? place.last_column - 1 : 0;
  if (place.first_line >= 0) {
    std::fprintf(stderr, "%d", place.first_line);
    if (place.first_column >= 0) std::fprintf(stderr, ".%d", place.first_column);
  }
  if (place.last_line < 0) return;
  if (place.first_line < place.last_line) {
    std::fprintf(stderr, "-%d", place.last_line);
    if (end_column >= 0) std::fprintf(stderr, ".%d", end_column);
  } else if (end_column >= 0 && place.first_column < end_column) {
    std::fprintf(stderr, "-%d", end_column);
  }
}

}  // namespace

void trace_symbol(const char *title, int symbol, const ZJsonLocation &place) {
  std::fprintf(stderr, "%s %s %s (", title, symbol < kTerminals ? "token" : "nterm",
               kSymbolNames[static_cast<std::size_t>(symbol)]);
  trace_place(place);
  std::fprintf(stderr, ": )\n");
}

}  // namespace zorvcrt
