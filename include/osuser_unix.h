/**
 * @file osuser_unix.h
 * The name of the user who runs the process.
 */
#ifndef ZORVCRT_OSUSER_UNIX_H
#define ZORVCRT_OSUSER_UNIX_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Tell the login name of the real user.
 *
 * @param user             receives the name, cut to fit and terminated; all of the area is cleared first
 * @param user_size        capacity of @p user in bytes
 * @param second           its first byte is cleared, and nothing more is done with it; may be null
 * @param unused           ignored
 * @param message          receives a message for missing arguments, cut to fit and terminated; may be null
 * @param message_capacity capacity of @p message in bytes; below 1 nothing is written
 * @return 0; -1 without a message when the user database does not know the user; -1 with the message
 *         "ZfxGetOSUser line 28: Invalid argument(s) vvuserp=... vlusrszi=..." for a null @p user or a
 *         @p user_size below 1, and then nothing is cleared
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetOSUser(char *user, int64_t user_size, char *second, int64_t unused, char *message,
                             int32_t message_capacity);

ZFX_END_DECLS

#endif
