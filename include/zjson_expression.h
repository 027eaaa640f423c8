/**
 * @file zjson_expression.h
 * JSON documents as plain records: a document (ZJsonExpression) holds one root value (ZJsonValue), and a
 * value is null, a boolean, an integer, a real, a string, an array or an object.
 *
 * The fields are public and read directly; their order is part of the contract. Ownership is strictly a tree:
 * a document owns its root and message, a value its container or string, an array its values, an object its
 * members, a member its name and value. A function that stores a value, member, array or object takes over
 * its ownership; a tree must not contain one record twice. Every record, vector and text is a heap block of
 * its own, of ZfxMemAlloc() and its kin.
 *
 * A function that cannot obtain memory returns null, or stores nothing where it returns nothing. One thread
 * at a time may use a document; different documents are independent.
 */
#ifndef ZORVCRT_ZJSON_EXPRESSION_H
#define ZORVCRT_ZJSON_EXPRESSION_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** What a value is; the tag that stands in ZJsonValue::type. */
typedef int32_t ZJsonType;

enum {
  ZJSON_NULL = 0,    /**< no payload */
  ZJSON_BOOL = 1,    /**< ZJsonValue::boolean */
  ZJSON_ARRAY = 2,   /**< ZJsonValue::array */
  ZJSON_OBJECT = 3,  /**< ZJsonValue::object */
  ZJSON_INTEGER = 4, /**< ZJsonValue::integer */
  ZJSON_NUMBER = 5,  /**< ZJsonValue::number */
  ZJSON_STRING = 6,  /**< ZJsonValue::string */
  ZJSON_END = 99     /**< no type: the end of the list of ZJsonObject_NewSimple() */
};

typedef struct ZJsonExpression ZJsonExpression;
typedef struct ZJsonValue ZJsonValue;
typedef struct ZJsonArray ZJsonArray;
typedef struct ZJsonObject ZJsonObject;
typedef struct ZJsonMember ZJsonMember;

/** A document. After a failed parse the root is null and the message is set; else it is the other way round.
 */
struct ZJsonExpression {
  ZJsonValue *root;   /**< owned, or null */
  char *errorMessage; /**< owned, or null */
};

/** A value: its type and the payload that belongs to the type. */
struct ZJsonValue {
  ZJsonType type; /**< ZJSON_NULL to ZJSON_STRING; says which member of the union holds */
  union {
    uint8_t boolean;     /**< 0 or 1 */
    int64_t integer;     /**< any */
    double number;       /**< any */
    char *string;        /**< owned; the text between the quotes of JSON output, with its escape sequences */
    ZJsonArray *array;   /**< owned */
    ZJsonObject *object; /**< owned */
  };
};

/** An array. Slots 0 to count - 1 hold its values in order. */
struct ZJsonArray {
  int32_t count;      /**< items in use */
  int32_t capacity;   /**< slots of ZJsonArray::items: 10 at first, 10 more when an append would leave none
                         unused */
  ZJsonValue **items; /**< owned vector of owned values */
};

/** An object. Slots 0 to count - 1 hold its members in order; names need not be unique. */
struct ZJsonObject {
  int32_t count;         /**< members in use */
  int32_t capacity;      /**< slots of ZJsonObject::members; grows as that of an array */
  ZJsonMember **members; /**< owned vector of owned members */
};

/** A name and its value. */
struct ZJsonMember {
  char *name;        /**< owned; as given, without escaping */
  ZJsonValue *value; /**< owned */
};

/** @name Documents */
/**@{*/

/** Make a document without root and message. @return the document, to be released with
 * ZJsonExpression_Delete(); null when memory runs out */
ZFX_API ZJsonExpression *ZJsonExpression_New(void);

/** Release a document, its root with everything below it, and its message. @param document null is ignored */
ZFX_API void ZJsonExpression_Delete(ZJsonExpression *document);

/**
 * Store a copy of a message in a document.
 *
 * @param document null does nothing
 * @param message  null leaves the field as it is. A message already there is overwritten and not released: a
 *                 caller who has set one before releases it with ZfxMemFree() first.
 */
ZFX_API void ZJsonExpression_SetErrorMessage(ZJsonExpression *document, const char *message);

/**
 * Make an object or an array the root of a document. The old root is released with everything below it.
 *
 * @param document  null does nothing
 * @param type      ZJSON_OBJECT or ZJSON_ARRAY. For any other type the old root is released all the same and
 *                  the document has none.
 * @param container the ZJsonObject or ZJsonArray; the document takes it over, unless memory runs out: then
 * the root is null and the container still the caller's. A container that the root already holds, or the root
 * itself, changes nothing.
 */
ZFX_API void ZJsonExpression_SetRoot(ZJsonExpression *document, int32_t type, void *container);

/**@}*/

/** @name Values
 * Each constructor returns a new value, to be stored or released with ZJsonValue_Delete(), or null when
 * memory runs out; what was passed in is then still the caller's. */
/**@{*/

/** Make a null value. */
ZFX_API ZJsonValue *ZJsonValue_New(void);
/** Make a null value. */
ZFX_API ZJsonValue *ZJsonValue_NewNull(void);
/** Make a boolean. @param boolean 0 for false, anything else for true */
ZFX_API ZJsonValue *ZJsonValue_NewBool(int32_t boolean);
/** Make an integer of 32 bits; it is held in 64. */
ZFX_API ZJsonValue *ZJsonValue_NewInt(int32_t integer);
/** Make an integer. */
ZFX_API ZJsonValue *ZJsonValue_NewInteger(int64_t integer);
/** Make a real. */
ZFX_API ZJsonValue *ZJsonValue_NewNumber(double number);
/** Make an object value. @param object taken over; null gives a value without object, which prints as {} */
ZFX_API ZJsonValue *ZJsonValue_NewObject(ZJsonObject *object);
/** Make an array value. @param array taken over; null gives a value without array, which prints as [] */
ZFX_API ZJsonValue *ZJsonValue_NewArray(ZJsonArray *array);

/**
 * Make a string.
 *
 * @param text   the text; null counts as empty. One pair of double quotes around it is left out. What remains
 *               passes through zjson_str_escape(), so that it can stand between quotes in JSON.
 * @param length bytes of @p text to take, 0 or less for none; a text that ends earlier is taken up to there
 */
ZFX_API ZJsonValue *ZJsonValue_NewStringL(const char *text, int32_t length);

/** Make a string of a whole text; otherwise as ZJsonValue_NewStringL(). */
ZFX_API ZJsonValue *ZJsonValue_NewString(const char *text);

/** Copy a value with everything below it. @param value null gives null
 * @return the copy, which shares nothing with the source; null when memory runs out, and then nothing is left
 * behind. A tag above 6 is copied with an empty payload. */
ZFX_API ZJsonValue *ZJsonValue_Clone(const ZJsonValue *value);

/** Release a value and everything below it. @param value null is ignored */
ZFX_API void ZJsonValue_Delete(ZJsonValue *value);

/**@}*/

/** @name Arrays */
/**@{*/

/** Make an empty array of capacity 10. @return the array, or null when memory runs out */
ZFX_API ZJsonArray *ZJsonArray_New(void);

/**
 * Add a value at the end of an array.
 *
 * @param array null does nothing
 * @param value taken over; null does nothing. When the vector cannot grow nothing is stored and the value is
 *              still the caller's, who can tell by the count.
 */
ZFX_API void ZJsonArray_Append(ZJsonArray *array, ZJsonValue *value);

/** Copy an array with everything below it; otherwise as ZJsonValue_Clone(). */
ZFX_API ZJsonArray *ZJsonArray_Clone(const ZJsonArray *array);

/** Release an array and everything below it. @param array null is ignored */
ZFX_API void ZJsonArray_Delete(ZJsonArray *array);

/**@}*/

/** @name Objects and members */
/**@{*/

/** Make an empty object of capacity 10. @return the object, or null when memory runs out */
ZFX_API ZJsonObject *ZJsonObject_New(void);

/**
 * Make an object of simple members from a list of arguments.
 *
 * @param type the first member's type, or ZJSON_END for an empty object. Behind it stand the member's name
 *             (const char *) and its value: nothing for ZJSON_NULL, an int for ZJSON_BOOL, an int64_t for
 *             ZJSON_INTEGER, a double for ZJSON_NUMBER, a const char * for ZJSON_STRING (as
 *             ZJsonValue_NewString() takes it); then the next member's type, and so on up to ZJSON_END.
 * @return the object; null when a name is null or empty, when a type is none of these, or when memory runs
 * out for the object itself. A member for which it runs out is left out.
 */
ZFX_API ZJsonObject *ZJsonObject_NewSimple(int32_t type, ...);

/** Add a member at the end of an object, also when the name is there already; otherwise as
 * ZJsonArray_Append(). */
ZFX_API void ZJsonObject_Append(ZJsonObject *object, ZJsonMember *member);

/** Find the first member of a name, which is compared byte for byte. @return the member, still the object's;
 * null when there is none or an argument is null */
ZFX_API ZJsonMember *ZJsonObject_GetMember(const ZJsonObject *object, const char *name);

/**
 * Put a member in the place of the first one with its name, which is released, or add it at the end when
 * there is none. A member that stands in the object before any other of its name stays as it is; one that
 * stands behind such another takes its place, and its own is closed.
 *
 * @param object null does nothing
 * @param member taken over as by ZJsonObject_Append(); null does nothing
 */
ZFX_API void ZJsonObject_Replace(ZJsonObject *object, ZJsonMember *member);

/** Remove and release a member; the later ones move up. Nothing when it is not in the object or an argument
 * is null. */
ZFX_API void ZJsonObject_DeleteMemberByRef(ZJsonObject *object, ZJsonMember *member);

/** Remove and release the first member of a name; otherwise as ZJsonObject_DeleteMemberByRef(). */
ZFX_API void ZJsonObject_DeleteMember(ZJsonObject *object, const char *name);

/** Copy an object with everything below it, the names as ZJsonMember_Clone() does; otherwise as
 * ZJsonValue_Clone(). */
ZFX_API ZJsonObject *ZJsonObject_Clone(const ZJsonObject *object);

/** Release an object and everything below it. @param object null is ignored */
ZFX_API void ZJsonObject_Delete(ZJsonObject *object);

/**
 * Make a member.
 *
 * @param name  the name, copied; one pair of equal quotes around it, double or single, is left out. Null
 * gives null.
 * @param value taken over, unless the result is null; may be null, and then prints as null
 * @return the member, to be stored or released with ZJsonMember_Delete(); null when memory runs out
 */
ZFX_API ZJsonMember *ZJsonMember_New(const char *name, ZJsonValue *value);

/** Copy a member with everything below it; otherwise as ZJsonValue_Clone(). The name passes through the rule
 * of ZJsonMember_New() again, so one that itself stands in quotes loses them in the copy. */
ZFX_API ZJsonMember *ZJsonMember_Clone(const ZJsonMember *member);

/** Release a member, its name and its value. @param member null is ignored */
ZFX_API void ZJsonMember_Delete(ZJsonMember *member);

/**@}*/

ZFX_END_DECLS

#endif
