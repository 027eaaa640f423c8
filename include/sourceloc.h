/**
 * @file sourceloc.h
 * Source locations as log lines show them.
 */
#ifndef ZORVCRT_SOURCELOC_H
#define ZORVCRT_SOURCELOC_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Write a source location: function, at sign, file name without its folders, colon and line
 * ("open@file.c:120").
 *
 * @param function the function's name, usually __func__; null counts as empty
 * @param file     the source file's path, usually __FILE__; null counts as empty
 * @param line     the line, usually __LINE__
 * @return the text, cut at 1023 characters. It belongs to the library and is valid until the same thread's
 *         next call or end. When memory or a thread-local key for it is lacking, an empty text.
 *
 * Each thread has a text of its own, so any number of threads may call at once.
 */
ZFX_API const char *ZfxGetSourceLocation(const char *function, const char *file, int32_t line);

ZFX_END_DECLS

#endif
