// The way from the driver into the parser.
#pragma once

#include "scanner_state.hpp"
#include "zjson_expression.h"

namespace zorvcrt {

/// As zjson_parse(), for a scanner that need not have a writable input; the last token's text is not exposed.
/// @param token receives the last token
int32_t parse_input(ZJsonExpression *&result, zjson_scanner &scanner, zjson_buffer &buffer, Token &token);

}  // namespace zorvcrt
