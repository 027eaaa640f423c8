/**
 * @file usergroups_unix.h
 * The groups of the user who runs the process.
 */
#ifndef ZORVCRT_USERGROUPS_UNIX_H
#define ZORVCRT_USERGROUPS_UNIX_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * List the names of the groups that the group database gives the real user, the primary one included.
 *
 * @param list             receives a list of names that ends with a null entry, to be released with
 *                         ZfxFreeUserGroups(); null when there is none. Null fails with errno EINVAL.
 * @param count            receives the number of names; may be null
 * @param message          receives a message, cut to fit and terminated, as told below; may be null
 * @param message_capacity capacity of @p message in bytes; below 1 nothing is written
 * @return 0, or -1 with no list
 *
 * The messages begin with "ZfxGetUserGroups line N:", and N tells what happened:
 * - 42 the user database does not know the user; -1
 * - 65 the number of groups cannot be told; -1
 * - 83 the groups have become more meanwhile, or memory is short; -1. Without @p message the groups that were
 *   asked for are listed all the same, as far as there is memory for their ids.
 * - 96 memory is short for the list; -1. Without @p message, when not even the list itself can be had, the
 *   result is 0 with no list.
 * - 113 a group has no name in the group database; it is left out, and the result is still 0. The message is
 *   that of the last such group.
 *
 * Re-entrant.
 */
ZFX_API int32_t ZfxGetUserGroups(char ***list, int32_t *count, char *message, int32_t message_capacity);

/** Release a list of ZfxGetUserGroups() with all its names. @param list may be null */
ZFX_API void ZfxFreeUserGroups(char **list);

ZFX_END_DECLS

#endif
