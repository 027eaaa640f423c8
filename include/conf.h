/**
 * @file conf.h
 * Configuration files: "key = value" lines under "[section]" headers.
 *
 * Lines are read in pieces of at most 1023 bytes, each piece taken as a line of its own, and trimmed of white
 * space (isspace()). Empty lines and those that begin with '#', ';', an apostrophe or "//" are skipped. A
 * line that begins with '[' opens a section, whose name reaches to the last ']' of the line, or to its end
 * without one, and is not trimmed further. Every other line is an entry of the section opened last, or of the
 * unnamed first one: the text in front of the first '=' is the key, the text behind it the value, both
 * trimmed; without
 * '=' the whole line is the key and the value is "". There is no quoting, escaping or continuation. Duplicate
 * sections and keys are kept, and look-ups, which disregard case (strcasecmp()), find the first.
 *
 * The records may be read freely to walk the tree; they are changed through the functions only. A value stays
 * where it is until its entry is set anew or the configuration is closed.
 *
 * Re-entrant. Threads may read one configuration together as long as none changes it.
 */
#ifndef ZORVCRT_CONF_H
#define ZORVCRT_CONF_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** One entry of a section. */
typedef struct ConfigEntry {
  char *key;                /**< never null */
  char *value;              /**< never null; "" when the line had no '=' */
  struct ConfigEntry *next; /**< next entry of the section in file order, or null */
} ConfigEntry;

/** One section. */
typedef struct ConfigSection {
  char *name;                 /**< never null; "" for the first section, which always exists */
  ConfigEntry *entries;       /**< first entry, or null */
  struct ConfigSection *next; /**< next section in file order, or null */
} ConfigSection;

/** A configuration. */
typedef struct Config {
  char *file_name;         /**< as given to Config_Open() */
  ConfigSection *sections; /**< the unnamed first section, never null */
} Config;

/** Receives one token of Config_TokenizeValue().
 * @param user_data what the caller handed in
 * @param token     never empty; valid during the call only
 * @return ignored */
typedef int32_t (*ConfigTokenCallback)(void *user_data, const char *token);

/**
 * Read a configuration file.
 *
 * @param file_name path of the file; null gives null
 * @return the configuration, to be given back with Config_Close(); null, with errno set, when the file cannot
 *         be opened or memory is short. A folder opens as an empty configuration.
 */
ZFX_API Config *Config_Open(const char *file_name);

/** Release a configuration with everything in it; null is ignored. */
ZFX_API void Config_Close(Config *config);

/**
 * Find a section by name.
 *
 * @param config the configuration; null gives null
 * @param name   the name; null or "" gives the unnamed first section, any other is looked for behind it
 * @return the first section of that name, borrowed; null when there is none
 */
ZFX_API ConfigSection *Config_GetSection(const Config *config, const char *name);

/** Find an entry by key. @return the first entry of that key, borrowed; null when there is none, or when
 * @p section or @p key is null */
ZFX_API ConfigEntry *Config_GetEntry(const ConfigSection *section, const char *key);

/**
 * Set an entry, making it when it is not there.
 *
 * @param section the section
 * @param key     the key; an entry that Config_GetEntry() finds by it keeps its place and the case of its key
 * @param value   the value, copied; null counts as ""
 * @return 0; -1 for a null @p section or @p key or when memory is short, and nothing has changed
 *
 * A new entry becomes the first of the section.
 */
ZFX_API int32_t Config_SetEntry(ConfigSection *section, const char *key, const char *value);

/**
 * Merge a folder of "*.conf" files into a configuration.
 *
 * @param config       the configuration
 * @param section_name section of the entry that names the folder, its first 63 bytes counting; null or "" for
 *                     the unnamed one
 * @param key_name     key of that entry; null or "" for "ConfigDir"
 * @return 0 when the folder could be opened; -1 when it could not, when section or entry are missing or
 *         @p config is null
 *
 * A value that begins with '/' is the folder, up to 2047 bytes of it. Any other is put behind the
 * configuration's file name cut after its last '/', and another '/'. A file name without a '/' is kept whole,
 * so a value relative to it names nothing that can be opened.
 *
 * Files whose names end in ".conf" in any case are read in the order in which the folder lists them; one that
 * cannot be read, or is not a regular file, is passed over. A section that the configuration does not have is
 * added as a whole at the end. Of any other section (the unnamed one included) the entries replace the values
 * of entries with the same key; an entry with a new key is not added.
 */
ZFX_API int32_t Config_DirOpen(Config *config, const char *section_name, const char *key_name);

/**
 * Split a value at a separator and hand out the parts.
 *
 * @param entry     the entry
 * @param separator the byte between parts
 * @param callback  called once for every part that is not empty, without the white space around it and cut to
 *                  2047 bytes: " a , ,b " split at ',' gives "a" and "b". It may change the entry; the parts
 *                  are those that the value had before.
 * @param user_data handed to the callback
 * @return 0; -1 for a null entry or callback or when memory is short
 */
ZFX_API int32_t Config_TokenizeValue(const ConfigEntry *entry, char separator, ConfigTokenCallback callback,
                                     void *user_data);

ZFX_END_DECLS

#endif
