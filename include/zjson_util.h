/**
 * @file zjson_util.h
 * JSON documents as text: the escaping of strings, and the printing of documents and their parts.
 *
 * A printing function appends to a terminated text in a heap block of its own, which it passes on at the
 * address of the caller's pointer; null there means that nothing has been written yet. The block is always
 * exactly as long as the text and belongs to the caller, who releases it with ZfxMemFree(). When memory runs
 * out, the piece for which it did is left out and printing goes on.
 *
 * Printing does not change the records. Strings are printed as they are stored, since they are stored
 * escaped; so are member names, which are not, so a name that holds a quote makes a text that is no JSON.
 *
 * The level is that of the indentation: -1 (as any negative number) prints compact, without any white space;
 * 0 or more prints pretty, at that depth, with a tab for each level. In pretty text every member and the '}'
 * behind members stand on lines of their own, a container that is an array's item starts on a new line, and
 * other items follow each other on the line of the '['. There is no blank behind a colon and no final line
 * feed. In place of a record that is missing, a value prints as null, an array as [], an object as {}, a
 * string as "", and a member not at all.
 */
#ifndef ZORVCRT_ZJSON_UTIL_H
#define ZORVCRT_ZJSON_UTIL_H

#include <stdint.h>

#include "zfxapi.h"
#include "zjson_expression.h"

ZFX_BEGIN_DECLS

/**
 * Escape a text for a place between double quotes.
 *
 * @param text   the text; null gives null
 * @param length in: the length of @p text, which is believed; out, only with a new text: that length plus one
 *               for each character that had to be escaped. Null counts as the true length.
 * @return a new text, released with ZfxMemFree(), or null when nothing has to be escaped or memory runs out
 *
 * Backspace, tab, line feed, carriage return and each '"' without a backslash right before it have to be
 * escaped. A text whose only special characters are quotes that are escaped already therefore stays as it is.
 * In a text with any other of them every '"' gets a backslash, one that has one too; the new text is then
 * longer than the length reported. All other bytes, the backslash too, are copied as they are.
 */
ZFX_API char *zjson_str_escape(const char *text, uint32_t *length);

/**
 * Print a document into a new text.
 *
 * @param document null, or a document without root, prints nothing
 * @param out      receives the text, or null when nothing was printed; a text that is there already is not
 *                 released. Null gives 0.
 * @param pretty   0 for compact text, anything else for pretty text
 * @return the length of the text in bytes
 */
ZFX_API uint32_t ZJsonExpression_ToString(const ZJsonExpression *document, char **out, int32_t pretty);

/**
 * Append a value to a text.
 *
 * @param value     the value; one with a tag that is no type appends nothing and gives 0
 * @param buffer    address of the text; null gives 0
 * @param afterName non-zero when a member's name and colon stand right before: a container then begins on the
 *                  same line
 * @param level     depth of the value, or -1 for compact text
 * @return the new length of the text in bytes
 */
ZFX_API uint32_t ZJsonValue_ToString(const ZJsonValue *value, char **buffer, int32_t afterName,
                                     int32_t level);

/** Append an array to a text; otherwise as ZJsonValue_ToString(). */
ZFX_API uint32_t ZJsonArray_ToString(const ZJsonArray *array, char **buffer, int32_t afterName,
                                     int32_t level);

/** Append an object to a text; otherwise as ZJsonValue_ToString(). */
ZFX_API uint32_t ZJsonObject_ToString(const ZJsonObject *object, char **buffer, int32_t afterName,
                                      int32_t level);

/** Append a member, its name and value, to a text; otherwise as ZJsonValue_ToString(). In pretty text it
 * begins a line at @p level. */
ZFX_API uint32_t ZJsonMember_ToString(const ZJsonMember *member, char **buffer, int32_t level);

ZFX_END_DECLS

#endif
