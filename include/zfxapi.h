/**
 * @file zfxapi.h
 * What every other header of zorvcrt needs: the fixed-width types that the declarations are made of, the
 * export macro, the C-linkage brackets and the attribute that lets the compiler check printf arguments.
 */
#ifndef ZORVCRT_ZFXAPI_H
#define ZORVCRT_ZFXAPI_H

#include <stdint.h>

/** @def ZFX_BEGIN_DECLS
 * Opens the declarations of a header, which get C linkage when the header is read as C++. */
/** @def ZFX_END_DECLS
 * Closes the declarations of a header. */
#ifdef __cplusplus
#define ZFX_BEGIN_DECLS extern "C" {
#define ZFX_END_DECLS }
#else
#define ZFX_BEGIN_DECLS
#define ZFX_END_DECLS
#endif

/** Marks a name that the shared library exports; everything else in it is hidden. */
#define ZFX_API __attribute__((visibility("default")))

/** Marks a function whose argument number @p format_index is a printf format and whose first value is
 * argument number @p first_value; both count from 1. */
#define ZFX_PRINTF(format_index, first_value) __attribute__((format(printf, format_index, first_value)))

#endif
