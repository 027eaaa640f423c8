// The quick way through a well-formed text in memory: bytes become records at once, without tokens, a stack
// of states and places. What is not well-formed, or unusual, is left to the parser of grammar.cpp, which says
// what is wrong and where.
#pragma once

#include "zjson_expression.h"

namespace zorvcrt {

enum class QuickOutcome {
  kParsed,
  kLeft,       // for the other parser, from the beginning
  kExhausted,  // memory has run out
};

/// Parses the bytes up to the limit.
/// @param document receives the document when it is parsed
/// @param at       receives where memory has run out
QuickOutcome parse_quickly(const char *text, const char *limit, ZJsonExpression *&document, const char *&at);

}  // namespace zorvcrt
