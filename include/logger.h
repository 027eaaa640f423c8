/**
 * @file logger.h
 * Levelled one-line messages to a file, to standard error or to a callback.
 *
 * A line is
 *
 *     [Sun Nov 15 08:38:12   ERROR] open@file.c:120: #2 cannot open x
 *
 * the time as ctime() gives it without the year (local zone; a change of TZ shows in the next line, a new
 * zone file within a second), the name of the level over seven characters, the source location, the error
 * number and the message; a line end is added unless the message has one anywhere in it. Fatal, error and
 * warning lines show an error number other than 0; information and debug lines have none.
 *
 * Every function ignores a null logger. Lines may be written from any number of threads at once and never
 * mix: a line reaches its file by one write, so lines of several processes that append to one local file stay
 * whole too. Changing the level or the callback and deleting are for the host to keep apart from logging.
 *
 * No function is meant for signal handlers. Logging leaves errno as it found it and "%m" works. A thread that
 * is cancelled while it logs to a stream finishes the line first. It needs about 10 KiB of stack.
 */
#ifndef ZORVCRT_LOGGER_H
#define ZORVCRT_LOGGER_H

#include <stdint.h>
#include <stdio.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** The levels: a logger writes the lines of its own level and of all lower numbers. Level 0 writes nothing.
 */
#define LOGGER_LEVEL_FATAL 1
#define LOGGER_LEVEL_ERROR 2   /**< see LOGGER_LEVEL_FATAL */
#define LOGGER_LEVEL_WARNING 3 /**< see LOGGER_LEVEL_FATAL */
#define LOGGER_LEVEL_INFO 4    /**< see LOGGER_LEVEL_FATAL */
#define LOGGER_LEVEL_DEBUG 5   /**< see LOGGER_LEVEL_FATAL */

/**
 * Receives one line.
 *
 * @param context what was given to Logger_SetCallback()
 * @param line    the terminated line, its line end included; valid during the call only
 *
 * Runs on the thread that logs, on several at once when several log, and may log itself.
 */
typedef void (*LoggerCallback)(void *context, const char *line);

/** A logger. The fields may be read; they are changed through the functions. */
typedef struct Logger {
  int32_t to_stderr;       /**< 1 when created on the standard error stream, until a callback is set */
  int32_t timestamps;      /**< 1: lines show the time. Set at creation and changed by no function. */
  FILE *stream;            /**< where lines go, or null */
  LoggerCallback callback; /**< when set, receives the lines instead */
  void *callback_context;  /**< passed back to the callback */
  uint32_t level;          /**< the most detailed level that is written */
  char text_encoding[63];  /**< see Logger_SetTextEncoding(); at most 62 characters, terminated */
} Logger;

/**
 * Create a logger.
 *
 * @param level      the most detailed level that is written, 1 to 5
 * @param path       the file to append to, created when missing; null for none. Not looked at with
 *                   @p use_stderr.
 * @param use_stderr other than 0 writes to the standard error stream
 * @return the logger, to be released with Logger_Delete(); null when the level is not 1 to 5 or memory is
 *         lacking
 *
 * With neither a path nor the flag, or when the file cannot be opened (a folder, a path without permission),
 * the logger writes nothing until a callback is set. The file is closed in programs that the process starts.
 */
ZFX_API Logger *Logger_New(uint32_t level, const char *path, int32_t use_stderr);

/** Close a logger's file (never standard output or standard error) and release it. @param logger may be null
 */
ZFX_API void Logger_Delete(Logger *logger);

/**
 * Hand lines to a function from now on; there is no way back to a stream.
 *
 * @param logger   the logger, whose file is closed as Logger_Delete() does
 * @param callback receives the lines; null changes nothing
 * @param context  passed back to @p callback, may be null
 *
 * Each line is built in a block of its own for the call; when memory for it is lacking, it is dropped.
 */
ZFX_API void Logger_SetCallback(Logger *logger, LoggerCallback callback, void *context);

/** Choose the most detailed level that is written.
 * @param logger null is ignored
 * @param level  any number: 0 for none, 5 or more for all */
ZFX_API void Logger_SetLogLevel(Logger *logger, uint32_t level);

/** Tell the most detailed level that is written. @return the level; 0 for a null logger */
ZFX_API uint32_t Logger_GetLogLevel(const Logger *logger);

/**
 * Note the name of the text encoding of the messages.
 *
 * @param logger null is ignored
 * @param name   the name, cut after 62 characters; null counts as empty
 *
 * The name is kept in the record for the host; lines are not converted.
 */
ZFX_API void Logger_SetTextEncoding(Logger *logger, const char *name);

/**
 * Log a debug line (level 5).
 *
 * @param logger   the logger
 * @param location where in the source, usually from ZfxGetSourceLocation(); null or empty for none. Location
 *                 and the ": " behind it are cut at 511 characters together.
 * @param format   a printf format; null counts as empty. A message of more than 65534 characters is cut. A
 *                 value that the C library refuses to format ends the message where it would stand.
 *
 * A message of more than 8191 characters takes a heap block for the length of the call; when memory for it is
 * lacking, the message is cut there.
 */
ZFX_API void Logger_LogDebug(const Logger *logger, const char *location, const char *format, ...)
    ZFX_PRINTF(3, 4);

/** Log an information line (level 4); a message of more than 8190 characters is cut. Otherwise as
 * Logger_LogDebug(). */
ZFX_API void Logger_LogInfo(const Logger *logger, const char *location, const char *format, ...)
    ZFX_PRINTF(3, 4);

/**
 * Log a warning line (level 3).
 *
 * @param logger   null is ignored
 * @param location as for Logger_LogDebug()
 * @param error    an error number that the line shows as "#5 "; 0 for none
 * @param format   as for Logger_LogDebug(), but for the length
 *
 * A message of more than 8191 characters is cut; Logger_GetMaxPrecision() tells how much of a text argument
 * is sure to fit. Otherwise as Logger_LogDebug().
 */
ZFX_API void Logger_LogWarning(const Logger *logger, const char *location, int32_t error, const char *format,
                               ...) ZFX_PRINTF(4, 5);

/** Log an error line (level 2); otherwise as Logger_LogWarning(). */
ZFX_API void Logger_LogError(const Logger *logger, const char *location, int32_t error, const char *format,
                             ...) ZFX_PRINTF(4, 5);

/** Log a fatal error line (level 1); the process goes on. Otherwise as Logger_LogWarning(). */
ZFX_API void Logger_LogFatalError(const Logger *logger, const char *location, int32_t error,
                                  const char *format, ...) ZFX_PRINTF(4, 5);

/**
 * Log the system's text for an error number as an error line (level 2) that carries the number.
 *
 * @param logger       null is ignored
 * @param location     as for Logger_LogError()
 * @param error        an errno value. Without @p use_strerror, -1 stands for the calling thread's errno; the
 *                     line then shows its text and the number -1.
 * @param use_strerror other than 0 takes the text of strerror(), which for -1 is that of an unknown error; 0
 *                     takes that of ZfxGetErrorText()
 */
ZFX_API void Logger_LogSystemError(const Logger *logger, const char *location, int32_t error,
                                   int32_t use_strerror);

/** Let all that the process writes to standard output (descriptor 1) land in the log. A logger without a
 * stream changes nothing. */
ZFX_API void Logger_RedirectStdout(const Logger *logger);

/** Let all that the process writes to standard error (descriptor 2) land in the log; otherwise as
 * Logger_RedirectStdout(). */
ZFX_API void Logger_RedirectStderr(const Logger *logger);

/** Tell the descriptor that lines are written to. @return the descriptor; -1 for a null logger or no stream
 */
ZFX_API int32_t Logger_GetLogFileno(const Logger *logger);

/**
 * Tell the largest precision for a "%.*s" argument with which a message is sure to fit its level.
 *
 * @param level  1 to 5
 * @param length accepted and not looked at
 * @return 8000 for levels 1 to 4, 60000 for level 5, 1 for any other
 */
ZFX_API int32_t Logger_GetMaxPrecisionSz(int32_t level, int32_t length);

/** As Logger_GetMaxPrecisionSz(), but 0 for a null or empty @p string. */
ZFX_API int32_t Logger_GetMaxPrecision(int32_t level, const char *string);

ZFX_END_DECLS

#endif
