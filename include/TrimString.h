/**
 * @file TrimString.h
 * Removal of surrounding white space.
 */
#ifndef ZORVCRT_TRIMSTRING_H
#define ZORVCRT_TRIMSTRING_H

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Remove white space from both ends of a text, in place.
 *
 * @param string the text, which must be writable; null is left alone. What is kept moves to the front.
 *
 * Re-entrant; white space is what isspace() says in the process locale.
 */
ZFX_API void TrimString(char *string);

ZFX_END_DECLS

#endif
