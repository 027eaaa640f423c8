/* What compiled hosts rely on, in C and in C++: the size of every public record, the type and place of each
 * of its fields and the value of every public constant, on x86-64. A difference here is a new soname. */
#ifndef TESTS_FRAME_LAYOUTS_H
#define TESTS_FRAME_LAYOUTS_H

#include <assert.h>
#include <stddef.h>

#include "zorvcrt.h"

#ifdef __cplusplus
#include <type_traits>
#define IS_OF_TYPE(record, field, type) std::is_same_v<decltype(record::field), type>
#else
#define IS_OF_TYPE(record, field, type) _Generic(&((record *)0)->field, __typeof__(type) * : 1, default : 0)
#endif

#define CONSTANT(name, value) static_assert((name) == (value), #name " has another value")
#define RECORD(record, bytes) static_assert(sizeof(record) == (bytes), #record " has another size")
#define FIELD(record, field, type, offset)                                                  \
  static_assert(offsetof(record, field) == (offset), #record "." #field " lies elsewhere"); \
  static_assert(IS_OF_TYPE(record, field, type), #record "." #field " has another type")

/* Foundation */
RECORD(strbuf, 48);
FIELD(strbuf, data, char *, 0);
FIELD(strbuf, capacity, int32_t, 8);
FIELD(strbuf, length, int32_t, 12);
FIELD(strbuf, end, char *, 16);
FIELD(strbuf, step, int32_t, 24);
FIELD(strbuf, scratch, char *, 32);
FIELD(strbuf, scratch_size, int32_t, 40);
CONSTANT(STRBUF_FORMAT_MAX, 16383);

RECORD(strptrlist, 24);
FIELD(strptrlist, items, char **, 0);
FIELD(strptrlist, count, uint64_t, 8);
FIELD(strptrlist, capacity, uint64_t, 16);

RECORD(DLinkListLink, 24);
FIELD(DLinkListLink, item, void *, 0);
FIELD(DLinkListLink, previous, DLinkListLink *, 8);
FIELD(DLinkListLink, next, DLinkListLink *, 16);
RECORD(DLinkList, 24);
FIELD(DLinkList, destroy, DLinkListDestroy, 0);
FIELD(DLinkList, head, DLinkListLink *, 8);
FIELD(DLinkList, tail, DLinkListLink *, 16);
CONSTANT(DLINKLIST_PREVIOUS, 1);
CONSTANT(DLINKLIST_NEXT, 2);

/* Operating system */
RECORD(ZfxMutex, 48);
FIELD(ZfxMutex, mutex, pthread_mutex_t, 0);
FIELD(ZfxMutex, attr, pthread_mutexattr_t, 40);
FIELD(ZfxMutex, locked, int32_t, 44);

RECORD(ZfxThread, 104);
FIELD(ZfxThread, reserved, uint64_t, 0);
FIELD(ZfxThread, thread, pthread_t, 8);
FIELD(ZfxThread, attr, pthread_attr_t, 16);
FIELD(ZfxThread, mutex, ZfxMutex *, 72);
FIELD(ZfxThread, threadEvent, ZfxEvent *, 80);
FIELD(ZfxThread, stopEvent, ZfxEvent *, 88);
FIELD(ZfxThread, userData, uint64_t, 96);

RECORD(DynLib, 264);
FIELD(DynLib, handle, void *, 0);
FIELD(DynLib, path, char[256], 8);
CONSTANT(DYNLIB_NOT_LOADED, 4);
CONSTANT(DYNLIB_NO_SYMBOL, 8);

RECORD(ZfxFileStatus, 40);
FIELD(ZfxFileStatus, flags, uint32_t, 0);
FIELD(ZfxFileStatus, change_time, int64_t, 8);
FIELD(ZfxFileStatus, modification_time, int64_t, 16);
FIELD(ZfxFileStatus, access_time, int64_t, 24);
FIELD(ZfxFileStatus, size, int64_t, 32);
CONSTANT(ZFX_FILE_DEVICE, 0x04u);
CONSTANT(ZFX_FILE_DIRECTORY, 0x08u);
CONSTANT(ZFX_FILE_REGULAR, 0x40u);
CONSTANT(ZFX_FILE_LINK, 0x100u);
CONSTANT(ZFX_FILE_PIPE, 0x4000u);
CONSTANT(ZFX_FILE_EXECUTABLE, 0x8000u);

/* Configuration */
RECORD(ConfigEntry, 24);
FIELD(ConfigEntry, key, char *, 0);
FIELD(ConfigEntry, value, char *, 8);
FIELD(ConfigEntry, next, ConfigEntry *, 16);
RECORD(ConfigSection, 24);
FIELD(ConfigSection, name, char *, 0);
FIELD(ConfigSection, entries, ConfigEntry *, 8);
FIELD(ConfigSection, next, ConfigSection *, 16);
RECORD(Config, 16);
FIELD(Config, file_name, char *, 0);
FIELD(Config, sections, ConfigSection *, 8);

CONSTANT(ZORV_CHECK_CONF, 0x02u);
CONSTANT(ZORV_CHECK_COF, 0x04u);
CONSTANT(ZORV_CHECK_CTL, 0x08u);
CONSTANT(ZORV_CHECK_LOG, 0x10u);
CONSTANT(ZORV_CHECK_DB, 0x20u);
CONSTANT(ZORV_DATA_AREA_OK, 0);
CONSTANT(ZORV_DATA_AREA_NOT_CONFIGURED, 2);
CONSTANT(ZORV_DATA_AREA_NOT_A_DIRECTORY, 20);

CONSTANT(QUOR_LEVEL_PRIVILEGED, 1);
CONSTANT(QUOR_LEVEL_GROUP, 2);
CONSTANT(QUOR_LEVEL_NONPRIVILEGED, 4);
CONSTANT(QUOR_LEVEL_ALL, 7);
CONSTANT(QUOR_LOAD_FAILURE, 91);

/* JSON */
RECORD(ZJsonExpression, 16);
FIELD(ZJsonExpression, root, ZJsonValue *, 0);
FIELD(ZJsonExpression, errorMessage, char *, 8);
RECORD(ZJsonValue, 16);
FIELD(ZJsonValue, type, int32_t, 0);
FIELD(ZJsonValue, boolean, uint8_t, 8);
FIELD(ZJsonValue, integer, int64_t, 8);
FIELD(ZJsonValue, number, double, 8);
FIELD(ZJsonValue, string, char *, 8);
FIELD(ZJsonValue, array, ZJsonArray *, 8);
FIELD(ZJsonValue, object, ZJsonObject *, 8);
RECORD(ZJsonArray, 16);
FIELD(ZJsonArray, count, int32_t, 0);
FIELD(ZJsonArray, capacity, int32_t, 4);
FIELD(ZJsonArray, items, ZJsonValue **, 8);
RECORD(ZJsonObject, 16);
FIELD(ZJsonObject, count, int32_t, 0);
FIELD(ZJsonObject, capacity, int32_t, 4);
FIELD(ZJsonObject, members, ZJsonMember **, 8);
RECORD(ZJsonMember, 16);
FIELD(ZJsonMember, name, char *, 0);
FIELD(ZJsonMember, value, ZJsonValue *, 8);
CONSTANT(ZJSON_NULL, 0);
CONSTANT(ZJSON_BOOL, 1);
CONSTANT(ZJSON_ARRAY, 2);
CONSTANT(ZJSON_OBJECT, 3);
CONSTANT(ZJSON_INTEGER, 4);
CONSTANT(ZJSON_NUMBER, 5);
CONSTANT(ZJSON_STRING, 6);
CONSTANT(ZJSON_END, 99);

RECORD(ZJsonSymbolValue, 8);
FIELD(ZJsonSymbolValue, integer, int64_t, 0);
FIELD(ZJsonSymbolValue, number, double, 0);
FIELD(ZJsonSymbolValue, string, char *, 0);
FIELD(ZJsonSymbolValue, value, ZJsonValue *, 0);
FIELD(ZJsonSymbolValue, member, ZJsonMember *, 0);
FIELD(ZJsonSymbolValue, object, ZJsonObject *, 0);
FIELD(ZJsonSymbolValue, array, ZJsonArray *, 0);
RECORD(ZJsonLocation, 16);
FIELD(ZJsonLocation, first_line, int32_t, 0);
FIELD(ZJsonLocation, first_column, int32_t, 4);
FIELD(ZJsonLocation, last_line, int32_t, 8);
FIELD(ZJsonLocation, last_column, int32_t, 12);
CONSTANT(ZJSON_TOKEN_END, 0);
CONSTANT(ZJSON_TOKEN_INTEGER, 258);
CONSTANT(ZJSON_TOKEN_NUMBER, 259);
CONSTANT(ZJSON_TOKEN_STRING, 260);
CONSTANT(ZJSON_TOKEN_TRUE, 261);
CONSTANT(ZJSON_TOKEN_FALSE, 262);
CONSTANT(ZJSON_TOKEN_NULL, 263);
CONSTANT(ZJSON_TOKEN_OBJECT_BEGIN, 264);
CONSTANT(ZJSON_TOKEN_OBJECT_END, 265);
CONSTANT(ZJSON_TOKEN_ARRAY_BEGIN, 266);
CONSTANT(ZJSON_TOKEN_ARRAY_END, 267);
CONSTANT(ZJSON_TOKEN_COMMA, 268);
CONSTANT(ZJSON_TOKEN_COLON, 269);

/* Logging */
RECORD(Logger, 104);
FIELD(Logger, to_stderr, int32_t, 0);
FIELD(Logger, timestamps, int32_t, 4);
FIELD(Logger, stream, FILE *, 8);
FIELD(Logger, callback, LoggerCallback, 16);
FIELD(Logger, callback_context, void *, 24);
FIELD(Logger, level, uint32_t, 32);
FIELD(Logger, text_encoding, char[63], 36);
CONSTANT(LOGGER_LEVEL_FATAL, 1);
CONSTANT(LOGGER_LEVEL_ERROR, 2);
CONSTANT(LOGGER_LEVEL_WARNING, 3);
CONSTANT(LOGGER_LEVEL_INFO, 4);
CONSTANT(LOGGER_LEVEL_DEBUG, 5);

/* Date and time */
RECORD(ZfxHrTimeDiff, 56);
FIELD(ZfxHrTimeDiff, total, uint64_t, 0);
FIELD(ZfxHrTimeDiff, hours, uint64_t, 8);
FIELD(ZfxHrTimeDiff, minutes, uint64_t, 16);
FIELD(ZfxHrTimeDiff, seconds, uint64_t, 24);
FIELD(ZfxHrTimeDiff, milliseconds, uint64_t, 32);
FIELD(ZfxHrTimeDiff, microseconds, uint64_t, 40);
FIELD(ZfxHrTimeDiff, nanoseconds, uint64_t, 48);

#endif
