// The trace of a parse on standard error.
#pragma once

#include <cstdint>
#include <cstdio>

#include "grammar_tables.hpp"
#include "scanner.h"

namespace zorvcrt {

/// "TITLE token NAME (PLACE: )" and a line feed.
void trace_symbol(const char *title, int symbol, const ZJsonLocation &place);

}  // namespace zorvcrt
