/**
 * @file FileStatus.h
 * What kind of file a path leads to, how large it is and when it was last touched.
 */
#ifndef ZORVCRT_FILESTATUS_H
#define ZORVCRT_FILESTATUS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** @name Bits of ZfxFileStatus::flags
 * At most one bit tells the kind; ZFX_FILE_EXECUTABLE is added for every kind of file, directories too. */
/**@{*/
#define ZFX_FILE_DEVICE 0x04u       /**< a character or block device */
#define ZFX_FILE_DIRECTORY 0x08u    /**< a directory */
#define ZFX_FILE_REGULAR 0x40u      /**< a regular file */
#define ZFX_FILE_LINK 0x100u        /**< a symbolic link; never set, because links are followed */
#define ZFX_FILE_PIPE 0x4000u       /**< a FIFO or a socket */
#define ZFX_FILE_EXECUTABLE 0x8000u /**< executable for its owner or for others; the group does not count */
/**@}*/

/** The status of a file. The order of the fields is part of the binary interface. */
typedef struct ZfxFileStatus {
  uint32_t flags;            /**< ZFX_FILE_ bits */
  int64_t change_time;       /**< last change of the status (owner, mode, content), seconds since 1970 UTC */
  int64_t modification_time; /**< last change of the content, seconds since 1970 UTC */
  int64_t access_time;       /**< last reading, seconds since 1970 UTC */
  int64_t size;              /**< size in bytes */
} ZfxFileStatus;

/**
 * Query the status of a file. Symbolic links are followed.
 *
 * @param status receives the status; all zero unless the result is 0. Null gives -1.
 * @param path   the file; null gives -1
 * @return 0 on success; -1 for a missing argument; otherwise the errno value of stat(), such as ENOENT
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxStatFile(ZfxFileStatus *status, const char *path);

ZFX_END_DECLS

#endif
