/**
 * @file zorvrcs.h
 * The settings of the installation and of the user: one process-wide tree of names and values on three
 * levels, read from the settings files on first use and mirrored in the process environment.
 *
 * Reading order: the system file ("conf/sys/quor.conf" of the data area, else the settings path), the user's
 * ".ZORVrcs", then every "*.conf" file of the extension directory. With `__KERNEL_DEVELOPER` in the
 * environment, the file that it names takes the place of the system file and of the user's. The guide
 * docs/settings.md has the file format and all the rules.
 *
 * Texts that these functions return belong to the tree or to the environment: they are never freed by the
 * caller and are valid until the next change. A text that they return may be passed to any of them.
 *
 * Threads: the tree, the settings path and the cursor are process-wide and not locked. Load before threads
 * start; from then on QuorConfQuery() may be called from all of them as long as nobody changes the settings
 * or the environment. During a load other threads may for moments see another current directory and an
 * environment without its variables.
 *
 * Where a function loads "or ends the process": when `__KERNEL_DEVELOPER` names no absolute path, or neither
 * that file nor "./.ZORVrcs" can be opened, it prints "Cannot load config file! (#9091) " and the system's
 * reason on standard error and exits with status 91. No other trouble with files is an error. A setting or
 * a variable for which memory runs out is left out, and a change for which it runs out is not made.
 */
#ifndef ZORVCRT_ZORVRCS_H
#define ZORVCRT_ZORVRCS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** @name Levels of settings, to be joined to a mask with | */
/**@{*/
#define QUOR_LEVEL_PRIVILEGED 1    /**< set by the installation; the user's file cannot touch it */
#define QUOR_LEVEL_GROUP 2         /**< set for the members of a group */
#define QUOR_LEVEL_NONPRIVILEGED 4 /**< everything else; in a query also the process environment */
#define QUOR_LEVEL_ALL 7           /**< all of them */
/**@}*/

/** The exit status of a process whose settings could not be loaded. */
#define QUOR_LOAD_FAILURE 91

/**
 * Load the settings when they are not loaded yet, or end the process.
 *
 * A first load exports every setting, of all levels, that the environment does not have yet, and settles
 * "QUOR_BLOCK_SIZE" to 2048 or 4096. Nothing is exported while `__QUORCONF_NOENV` is in the environment.
 *
 * @return 0
 */
ZFX_API int32_t QuorConfCreate(void);

/**
 * Load the settings when they are not loaded yet, as QuorConfCreate() but without ending the process.
 *
 * @return 1 when there are settings now, 0 when the load failed. A failed load leaves an empty tree behind,
 *         so that later calls find it, return 1 and try no file again before QuorConfRemove().
 */
ZFX_API int32_t QuorConfExists(void);

/**
 * Look a setting up. Loads first when needed, or ends the process.
 *
 * @param name the setting, compared with case; null gives null without loading
 * @param mask levels to look at, QUOR_LEVEL_ bits; others are ignored. With QUOR_LEVEL_NONPRIVILEGED an
 *             environment variable of the name comes before all levels; then the highest level wins.
 * @return the value, or null when there is none
 */
ZFX_API const char *QuorConfQuery(const char *name, int32_t mask);

/**
 * Change a non-privileged setting, in the tree and in the environment. Loads first when needed, or ends the
 * process.
 *
 * @param name  the setting; white space around it is removed. Null changes nothing.
 * @param value the new value, of which leading white space is removed. In the tree $NAME and ${NAME} are
 *              replaced and the result is cut at 1023 bytes, and an empty result removes the setting; the
 *              environment receives the value as it was given. Null or "" removes a setting and then sets its
 *              variable to the empty string; when the setting does not exist, nothing happens.
 *
 * The environment is left alone while `__QUORCONF_NOENV` is in it.
 */
ZFX_API void QuorConfUpdate(const char *name, const char *value);

/** Forget all settings. The next function that needs them loads again; the environment stays as it is. */
ZFX_API void QuorConfRemove(void);

/**
 * Choose the settings path, the system file that is read when the data area has none.
 *
 * @param path the file, which need not exist; it is copied. All settings are forgotten and loaded at once, or
 *             the process ends. Null or "" restores "/usr/local/zorv/sys/conf/quor.conf" and forgets all
 *             settings without loading. When there is no memory for the copy nothing changes.
 *
 * This load derives no "QUOR_HOME", and it exports the settings but does not settle "QUOR_BLOCK_SIZE". With
 * `__KERNEL_DEVELOPER` in the environment the load does not look at the path and forgets it, but later loads
 * still derive no "QUOR_HOME" before the path is restored.
 */
ZFX_API void QuorConfSetPath(const char *path);

/**
 * Put the cursor on the first setting. Loads first when needed, or ends the process.
 *
 * @return a handle that is only good for a comparison with null; null when there are no settings at all
 */
ZFX_API void *QuorConfStart(void);

/**
 * Fetch the setting at the cursor and move the cursor on.
 *
 * @param level receives the setting's level; may be null
 * @param value receives its value, as stored in the tree; may be null
 * @return its name, or null after the last one, before the first QuorConfStart() or without settings; then
 *         @p level and @p value are left alone
 *
 * Visits the levels in ascending order and the settings of a level in the order in which they were added. A
 * change between two calls may make the walk miss settings; it goes back to none.
 */
ZFX_API const char *QuorConfNext(int32_t *level, const char **value);

/**
 * Print all settings to standard output. Loads first when needed, or ends the process.
 *
 * For each level that has occurred a line "Table level : Privileged", "Group" or "Non-privileged", then for
 * each setting a line of a tab, the name, a tab and the value. For the group and non-privileged levels the
 * value of the environment variable of that name is shown where there is one.
 */
ZFX_API void QuorConfPrint(void);

/** Forget all settings, as QuorConfRemove() does. Runs by itself when the library is unloaded. */
ZFX_API void unload_zorvrcs(void);

ZFX_END_DECLS

#endif
