/**
 * @file scanner.h
 * The JSON scanner: a text in memory or a stream becomes tokens with values and places.
 *
 * All state is in a handle; different handles may be used on different threads, one handle on one thread at a
 * time. A handle keeps a stack of input buffers, the top of which is scanned. Null for a handle is tolerated
 * everywhere: it scans nothing, keeps nothing and answers 0 or null.
 *
 * The tokens, by the longest match: the punctuation, the words true, false and null, integers (an optional
 * '-', then 0 or digits that do not begin with 0), numbers (an integer with a fraction, an exponent or both),
 * and strings. White space is blank, tab, carriage return and line feed; it belongs to the token next to it,
 * on either side, except for strings, which take none in. Any other byte is a token of its own, so is a
 * blank, tab or carriage return that no token takes in. A line feed that none takes in ends the process, see
 * below.
 *
 * A string stands between double or between single quotes. Any byte may stand in it, a backslash keeps a
 * quote from ending it, and escape sequences are neither checked nor decoded. By the longest match a string
 * goes on behind a quote with a backslash right before it wherever another quote ends it: "\" is a string,
 * but in
 * "\","a" it is "\"," that is one.
 *
 * Failures that a scan cannot get over end the process: a message and a line feed go to standard error and
 * the exit status is 2. The messages: "flex scanner jammed" (a line feed that no token takes in), "input in
 * flex scanner failed" (the stream cannot be read), "fatal error - scanner input buffer overflow" (a token
 * for which there is no memory), "out of dynamic memory in yy_create_buffer()", "out of dynamic memory in
 * yyensure_buffer_stack()", "out of dynamic memory in yy_scan_buffer()", "out of dynamic memory in
 * yy_scan_bytes()", "yyset_lineno called with no buffer", "yyset_column called with no buffer".
 */
#ifndef ZORVCRT_SCANNER_H
#define ZORVCRT_SCANNER_H

#include <stdint.h>
#include <stdio.h>

#include "zfxapi.h"
#include "zjson_expression.h"

ZFX_BEGIN_DECLS

/** A scanner. */
typedef struct zjson_scanner zjson_scanner;

/** An input buffer of a scanner. */
typedef struct zjson_buffer zjson_buffer;

/** What zjson_lex() returns; any other code is a byte, those above 127 as negative numbers. */
enum {
  ZJSON_TOKEN_END = 0, /**< the end of the input; a byte of value 0 outside a string looks the same */
  ZJSON_TOKEN_INTEGER = 258,
  ZJSON_TOKEN_NUMBER = 259,
  ZJSON_TOKEN_STRING = 260,
  ZJSON_TOKEN_TRUE = 261,
  ZJSON_TOKEN_FALSE = 262,
  ZJSON_TOKEN_NULL = 263,
  ZJSON_TOKEN_OBJECT_BEGIN = 264,
  ZJSON_TOKEN_OBJECT_END = 265,
  ZJSON_TOKEN_ARRAY_BEGIN = 266,
  ZJSON_TOKEN_ARRAY_END = 267,
  ZJSON_TOKEN_COMMA = 268,
  ZJSON_TOKEN_COLON = 269
};

/** The value of a token or, in a parser, of any symbol. */
typedef union ZJsonSymbolValue {
  int64_t integer;   /**< of an integer, as intconv_atoi64s() reads the token's text: it wraps */
  double number;     /**< of a number, as realconv_atof() reads the token's text: without its exponent */
  char *string;      /**< of a string: the text between its quotes, in a block that the receiver releases with
                          ZfxMemFree() */
  ZJsonValue *value; /**< in a parser, of a value */
  ZJsonMember *member; /**< in a parser, of a member */
  ZJsonObject *object; /**< in a parser, of an object */
  ZJsonArray *array;   /**< in a parser, of an array */
} ZJsonSymbolValue;

/** A place in the input. A parser starts with 1 in every field. Each token begins where the last one has
 * ended; a line feed adds a line and sets the column to 0, any other byte adds a column. */
typedef struct ZJsonLocation {
  int32_t first_line;   /**< line where it begins */
  int32_t first_column; /**< column where it begins */
  int32_t last_line;    /**< line where it ends */
  int32_t last_column;  /**< column where it ends */
} ZJsonLocation;

/**
 * Make a scanner.
 *
 * @param scanner receives the handle, to be released with zjson_lex_destroy(); null when memory runs out
 * @return 0, or 1 with errno set: EINVAL when @p scanner is null, ENOMEM when memory runs out
 */
ZFX_API int32_t zjson_lex_init(zjson_scanner **scanner);

/** Make a scanner with a datum of the user's, which the scanner only keeps; otherwise as zjson_lex_init(). */
ZFX_API int32_t zjson_lex_init_extra(void *extra, zjson_scanner **scanner);

/** Release a scanner and all its buffers. Streams are not closed. @return 0 */
ZFX_API int32_t zjson_lex_destroy(zjson_scanner *scanner);

/**
 * Scan the next token.
 *
 * @param lval    receives the token's value if it has one; null when it is not wanted
 * @param lloc    the place, moved on over the token; at the end of the input it stays; may be null
 * @param scanner the handle. The first call takes standard input when nothing was set to be scanned.
 * @return the token's code. When memory runs out for a string its value is null.
 */
ZFX_API int32_t zjson_lex(ZJsonSymbolValue *lval, ZJsonLocation *lloc, zjson_scanner *scanner);

/** @name Input buffers
 * The functions that return a buffer return null only for a null handle, unless they say otherwise. */
/**@{*/

/** Scan a copy of bytes in a new buffer, which becomes the current one in the place of the one on top.
 * @param bytes   null counts as none
 * @param length  their number, 0 or less for none
 * @param scanner the handle; null gives null
 * @return the buffer, which the handle owns */
ZFX_API zjson_buffer *zjson__scan_bytes(const char *bytes, int32_t length, zjson_scanner *scanner);

/** Scan a copy of a text; otherwise as zjson__scan_bytes().
 * @param text    null counts as empty
 * @param scanner the handle
 * @return as zjson__scan_bytes() */
ZFX_API zjson_buffer *zjson__scan_string(const char *text, zjson_scanner *scanner);

/** Scan an area of the caller's in place; otherwise as zjson__scan_bytes().
 * @param base    the area, which the scanner changes while it scans (it terminates the last token's text
 * there until the next call) and which must outlive the buffer
 * @param size    its size in bytes; the last two must be 0 and are not scanned
 * @param scanner the handle
 * @return the buffer, or null when they are not or @p base is null */
ZFX_API zjson_buffer *zjson__scan_buffer(char *base, uint64_t size, zjson_scanner *scanner);

/** Make a buffer that reads from a stream, in blocks of at most 8192 bytes. It doubles when a token does not
 * fit.
 * @param stream  null for the stream that is set when the buffer is first read
 * @param size    bytes of space at first; below 1 stands for 16384
 * @param scanner the handle
 * @return the buffer */
ZFX_API zjson_buffer *zjson__create_buffer(FILE *stream, int32_t size, zjson_scanner *scanner);

/** Make a buffer the current one in the place of the one on top, which is kept for the caller. Null does
 * nothing. */
ZFX_API void zjson__switch_to_buffer(zjson_buffer *buffer, zjson_scanner *scanner);

/** Release a buffer, wherever in the stack it is. Null does nothing. */
ZFX_API void zjson__delete_buffer(zjson_buffer *buffer, zjson_scanner *scanner);

/** Forget what a buffer still holds, so that it reads on from its stream. Null does nothing. */
ZFX_API void zjson__flush_buffer(zjson_buffer *buffer, zjson_scanner *scanner);

/** Put a buffer on top of the stack. Null does nothing. */
ZFX_API void zjson_push_buffer_state(zjson_buffer *buffer, zjson_scanner *scanner);

/** Release the buffer on top of the stack; the one below becomes the current one again. */
ZFX_API void zjson_pop_buffer_state(zjson_scanner *scanner);

/** Make the current buffer, or a new one, read from a stream from its beginning. The line and column of a
 * current buffer stay. */
ZFX_API void zjson_restart(FILE *stream, zjson_scanner *scanner);

/**@}*/

/** @name What a handle knows */
/**@{*/

/** The user's datum, as zjson_lex_init_extra() and zjson_set_extra() have left it. */
ZFX_API void *zjson_get_extra(const zjson_scanner *scanner);
/** Set the user's datum, which the scanner only keeps. */
ZFX_API void zjson_set_extra(void *extra, zjson_scanner *scanner);

/** The input stream, from which the current buffer reads. */
ZFX_API FILE *zjson_get_in(const zjson_scanner *scanner);
/** Set the input stream; a current buffer reads on from it when its bytes are used up. */
ZFX_API void zjson_set_in(FILE *stream, zjson_scanner *scanner);

/** The output stream, to which nothing is written; standard output from the first zjson_lex() on. */
ZFX_API FILE *zjson_get_out(const zjson_scanner *scanner);
/** Set the output stream, to which nothing is written. */
ZFX_API void zjson_set_out(FILE *stream, zjson_scanner *scanner);

/** The line of the current buffer, from 1: one more for every line feed in a token of the table. 0 without a
 * buffer. */
ZFX_API int32_t zjson_get_lineno(const zjson_scanner *scanner);
/** Set the line of the current buffer. Without a buffer it ends the process. */
ZFX_API void zjson_set_lineno(int32_t line, zjson_scanner *scanner);

/** The column of the current buffer: what was set, and 0 from the next line feed on. 0 without a buffer.
 */
ZFX_API int32_t zjson_get_column(const zjson_scanner *scanner);
/** Set the column of the current buffer. Without a buffer it ends the process. */
ZFX_API void zjson_set_column(int32_t column, zjson_scanner *scanner);

/** The length in bytes of what zjson_get_text() gives. */
ZFX_API int32_t zjson_get_leng(const zjson_scanner *scanner);
/** The text of the last token, with the white space that it took in. It is terminated and valid until the
 * next call for the handle; "" before the first token and at the end. */
ZFX_API const char *zjson_get_text(const zjson_scanner *scanner);

/** Where the last zjson_lex() has stored its token's value. */
ZFX_API ZJsonSymbolValue *zjson_get_lval(const zjson_scanner *scanner);
/** Set what zjson_get_lval() gives until the next zjson_lex(). */
ZFX_API void zjson_set_lval(ZJsonSymbolValue *lval, zjson_scanner *scanner);
/** Where the last zjson_lex() has stored its token's place. */
ZFX_API ZJsonLocation *zjson_get_lloc(const zjson_scanner *scanner);
/** Set what zjson_get_lloc() gives until the next zjson_lex(). */
ZFX_API void zjson_set_lloc(ZJsonLocation *lloc, zjson_scanner *scanner);

/** The handle's trace flag, which is only kept. */
ZFX_API int32_t zjson_get_debug(const zjson_scanner *scanner);
/** Set the handle's trace flag, which is only kept. */
ZFX_API void zjson_set_debug(int32_t debug, zjson_scanner *scanner);

/**@}*/

/** @name The scanner's memory: malloc(), realloc() and free(); the handle is not used */
/**@{*/

/** malloc(). */
ZFX_API void *zjson_alloc(uint64_t size, zjson_scanner *scanner);
/** realloc(). */
ZFX_API void *zjson_realloc(void *block, uint64_t size, zjson_scanner *scanner);
/** free(). */
ZFX_API void zjson_free(void *block, zjson_scanner *scanner);
/**@}*/

ZFX_END_DECLS

#endif
