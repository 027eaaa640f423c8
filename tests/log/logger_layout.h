/* The layout of the logger's record, for C and for C++. */
#ifndef TESTS_LOG_LOGGER_LAYOUT_H
#define TESTS_LOG_LOGGER_LAYOUT_H

#include <assert.h>
#include <stddef.h>

#include "logger.h"

static_assert(offsetof(Logger, to_stderr) == 0, "to_stderr");
static_assert(offsetof(Logger, timestamps) == 4, "timestamps");
static_assert(offsetof(Logger, stream) == 8, "stream");
static_assert(offsetof(Logger, callback) == 16, "callback");
static_assert(offsetof(Logger, callback_context) == 24, "callback_context");
static_assert(offsetof(Logger, level) == 32, "level");
static_assert(offsetof(Logger, text_encoding) == 36, "text_encoding");
static_assert(sizeof(Logger) == 104, "the record");

#endif
