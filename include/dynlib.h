/**
 * @file dynlib.h
 * Shared libraries loaded at run time.
 *
 * A library once loaded stays loaded for the life of the process; only the record of it is released. Apart
 * from GetDLError() all functions are re-entrant: the loader keeps its pending error per thread.
 */
#ifndef ZORVCRT_DYNLIB_H
#define ZORVCRT_DYNLIB_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

#define DYNLIB_NOT_LOADED 4 /**< result of LoadDynLib() and LoadProc(): no library is loaded */
#define DYNLIB_NO_SYMBOL 8  /**< result of LoadProc(): the library has no such symbol */

/** A loaded library. Owned by the caller, who releases it with UnloadDynLib() or ReleaseDynLibHandle(). */
typedef struct DynLib {
  void *handle;   /**< the loader's handle, as dlopen() gave it */
  char path[256]; /**< the path as given to LoadDynLib(), cut to 255 bytes */
} DynLib;

/**
 * Load a shared library with all its symbols resolved.
 *
 * @param path    a path, or a bare name that the loader looks for; of any length. Null stands for the running
 *                program itself, and the record's path is then empty.
 * @param library receives the record, null on failure. Null is a failure.
 * @return 0, or DYNLIB_NOT_LOADED (4); GetDynLoadError() then tells why
 */
ZFX_API int32_t LoadDynLib(const char *path, DynLib **library);

/**
 * Look up a symbol.
 *
 * @param library the record; null finds nothing
 * @param unused  ignored
 * @param name    the symbol's name; null finds nothing
 * @param address receives the address, null when there is no such symbol; may be null
 * @return 0, or DYNLIB_NO_SYMBOL (8)
 */
ZFX_API int32_t LoadProc(const DynLib *library, int32_t unused, const char *name, void **address);

/** Release the record; the library stays loaded. @param library may be null */
ZFX_API void ReleaseDynLibHandle(DynLib *library);

/** Release the record, exactly as ReleaseDynLibHandle() does: the library stays loaded. */
ZFX_API void UnloadDynLib(DynLib *library);

/**
 * Take the calling thread's pending loader error.
 *
 * @param buffer   receives the text, cut to fit and terminated: the loader's message, or "Unknown error."
 * when none is pending. Null receives nothing.
 * @param capacity capacity of @p buffer in bytes; 0 writes nothing
 * @return @p buffer
 *
 * Whatever is written, the error is no longer pending afterwards.
 */
ZFX_API char *GetDynLoadError(char *buffer, uint32_t capacity);

/** Take the pending loader error; the same as GetDynLoadError(). */
ZFX_API char *GetDynLoadErrorV(char *buffer, uint32_t capacity);

/**
 * Take the pending loader error as GetDynLoadError() does, cut to 254 bytes.
 *
 * @return a text in one area that all threads share; the next call overwrites it. Not for threads that may
 * call it at the same time.
 */
ZFX_API const char *GetDLError(void);

ZFX_END_DECLS

#endif
