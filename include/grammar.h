/**
 * @file grammar.h
 * The JSON parser: tokens of a scanner become a document.
 *
 * A document is an object or an array; a comma stands only between items, and nothing may stand behind the
 * document but the white space that its last bracket takes in. Member names are strings of either quote; they
 * pass through the rule of ZJsonMember_New(), string values through that of ZJsonValue_NewString(). Members
 * of the same name are all kept. The first syntax error ends a parse.
 *
 * Parses on different scanners are independent and may run at the same time.
 */
#ifndef ZORVCRT_GRAMMAR_H
#define ZORVCRT_GRAMMAR_H

#include <stdint.h>

#include "scanner.h"
#include "zfxapi.h"
#include "zjson_expression.h"

ZFX_BEGIN_DECLS

/** When not 0, zjson_parse() writes a trace of its steps to standard error. Process-wide, 0 at first, looked
 * at when a parse begins. */
ZFX_API extern int32_t zjson_debug;

/**
 * Parse the input of a scanner.
 *
 * @param result  must point to null; receives the document, or one with an error message and without root. It
 *                stays null when memory runs out for either. A null @p result only checks the input.
 * @param scanner the handle; null has no input
 * @return 0 when the input is a document; 1 after a syntax error; 2 with the message "memory exhausted" when
 * the parser's stack of 10,000 entries is used up (9,997 arrays within each other fit, or 3,333 objects) or
 *         memory runs out
 *
 * The message of a syntax error names the token and, when they are no more than four, those that would have
 * been right: "line #1.7: syntax error, unexpected INTEGER, expecting COLON".
 */
ZFX_API int32_t zjson_parse(ZJsonExpression **result, zjson_scanner *scanner);

/**
 * Report an error of a parse: make a document with the message "line #L.C: " and @p message, cut to 1023
 * bytes.
 *
 * @param loc     where, by its last line L and last column C; null counts as 0.0
 * @param result  receives the document, or null when memory runs out; one that is there already is not
 * released. Null does nothing.
 * @param scanner not used
 * @param message the message; null counts as empty
 * @return 0
 */
ZFX_API int32_t zjson_error(const ZJsonLocation *loc, ZJsonExpression **result, zjson_scanner *scanner,
                            const char *message);

ZFX_END_DECLS

#endif
