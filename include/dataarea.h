/**
 * @file dataarea.h
 * The data area: the server's data directory tree.
 *
 * Its place is fixed by "/usr/local/zorv/var", which is the tree's directory itself or a symbolic link to it.
 * A relative link target counts from "/usr/local/zorv".
 */
#ifndef ZORVCRT_DATAAREA_H
#define ZORVCRT_DATAAREA_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** @name What GetZorvDataArea() can check, to be joined with | */
/**@{*/
#define ZORV_CHECK_CONF 0x02u /**< the directory "conf/sys" */
#define ZORV_CHECK_COF 0x04u  /**< the directory "conf/cof" */
#define ZORV_CHECK_CTL 0x08u  /**< the directory "ctl" with its files "CONTROL.BAF" and "CONTROL.BIF" */
#define ZORV_CHECK_LOG 0x10u  /**< the directory "log" */
#define ZORV_CHECK_DB 0x20u   /**< the directory "db" */
/**@}*/

/** @name Results of GetZorvDataArea() that are not errno values of a failed status query */
/**@{*/
#define ZORV_DATA_AREA_OK 0               /**< found, and every requested check passed */
#define ZORV_DATA_AREA_NOT_CONFIGURED 2   /**< not configured, or a control file is missing */
#define ZORV_DATA_AREA_NOT_A_DIRECTORY 20 /**< a directory is missing, or is something else */
/**@}*/

/**
 * Find the data area and check that it is complete.
 *
 * @param path         receives the data area's directory; may be null. Written only when @p checks is not 0
 *                     and every check passed.
 * @param path_size    capacity of @p path in bytes; a longer directory is cut, below 1 nothing is written.
 *                     1040 hold every result.
 * @param checks       ZORV_CHECK_ bits. They are checked in the order conf, cof, log, db, ctl up to the first
 *                     failure. 0 only asks whether the data area is configured; bits without a meaning check
 *                     that the data area is a directory and no more.
 * @param message      receives "", or on failure one line that tells what is wrong; may be null
 * @param message_size capacity of @p message in bytes; a longer message is cut, below 1 nothing is written
 * @return one of
 *         - 0: found, and every requested check passed;
 *         - 2: "The ZORV data area is not configured", because "/usr/local/zorv/var" is missing, leads
 *           nowhere or is neither a directory nor a link; or "The CONTROL.BAF file was not found at ..." (or
 *           CONTROL.BIF), because it is missing or not a regular file;
 *         - 20: the data area is not a directory, or a directory in it is missing or not a directory;
 *         - otherwise the errno value of a failed status query of the data area itself, with "The ZORV data
 *           area does not exist: ...".
 *
 * At most 1023 bytes of a link target, and of a path inside the data area, are looked at. Prints nothing.
 * Re-entrant.
 */
ZFX_API int32_t GetZorvDataArea(char *path, int32_t path_size, uint32_t checks, char *message,
                                int32_t message_size);

ZFX_END_DECLS

#endif
