/**
 * @file zjsondriver.h
 * JSON documents from texts, streams and files; see grammar.h for the language and scanner.h for its tokens
 * and for the failures that end the process.
 *
 * Every function hands over a document that the caller releases with ZJsonExpression_Delete(): one with a
 * root, or after an error one without a root and with ZJsonExpression::errorMessage set. All are re-entrant.
 */
#ifndef ZORVCRT_ZJSONDRIVER_H
#define ZORVCRT_ZJSONDRIVER_H

#include <stdint.h>
#include <stdio.h>

#include "zfxapi.h"
#include "zjson_expression.h"

ZFX_BEGIN_DECLS

/**
 * Parse a text.
 *
 * @param text   the bytes, which are neither changed nor kept; null counts as none
 * @param length their number, 0 or less for none. Blanks, tabs, line feeds, carriage returns and zero bytes
 * at the end are not looked at.
 * @return the document, or null when memory runs out for it
 */
ZFX_API ZJsonExpression *ZJsonExpression_Parse(const char *text, int32_t length);

/**
 * Parse what a stream gives, to its end, which is not trimmed: a final line feed belongs to the last bracket.
 *
 * @param stream an open stream, read in blocks and not closed; null stands for standard input
 * @return the document, or null when memory runs out for it or for the scanner
 */
ZFX_API ZJsonExpression *ZJsonExpression_ParseStream(FILE *stream);

/**
 * Parse a file, as ZJsonExpression_ParseStream() does. A regular file of up to 64 MiB is held in memory as a
 * whole meanwhile.
 *
 * @param out  receives the document; untouched when the file cannot be opened
 * @param path the file's name
 * @return 0 when there is a document, be it one with an error message; 22 (EINVAL) when @p out or @p path is
 *         null; 63 when there is none because memory ran out; else the errno of opening the file. What opens
 * and cannot be read, a directory for one, ends the process as scanner.h tells.
 */
ZFX_API int32_t ZJsonExpression_ParseFile(ZJsonExpression **out, const char *path);

ZFX_END_DECLS

#endif
