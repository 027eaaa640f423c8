/* The records as a caller in C sees them. */
#include "zjson_expression.h"

#include <stddef.h>

#define HOLDS(condition) _Static_assert(condition, #condition)

HOLDS(sizeof(ZJsonType) == 4 && (ZJsonType)-1 < 0);
HOLDS(ZJSON_NULL == 0 && ZJSON_BOOL == 1 && ZJSON_ARRAY == 2 && ZJSON_OBJECT == 3);
HOLDS(ZJSON_INTEGER == 4 && ZJSON_NUMBER == 5 && ZJSON_STRING == 6 && ZJSON_END == 99);
HOLDS(sizeof(ZJsonExpression) == 16);
HOLDS(offsetof(ZJsonExpression, root) == 0 && offsetof(ZJsonExpression, errorMessage) == 8);
HOLDS(sizeof(ZJsonValue) == 16 && offsetof(ZJsonValue, type) == 0);
HOLDS(offsetof(ZJsonValue, boolean) == 8 && sizeof(((ZJsonValue *)0)->boolean) == 1);
HOLDS(offsetof(ZJsonValue, integer) == 8 && offsetof(ZJsonValue, number) == 8);
HOLDS(offsetof(ZJsonValue, string) == 8 && offsetof(ZJsonValue, array) == 8);
HOLDS(offsetof(ZJsonValue, object) == 8);
HOLDS(sizeof(ZJsonArray) == 16 && offsetof(ZJsonArray, count) == 0);
HOLDS(offsetof(ZJsonArray, capacity) == 4 && offsetof(ZJsonArray, items) == 8);
HOLDS(sizeof(ZJsonObject) == 16 && offsetof(ZJsonObject, count) == 0);
HOLDS(offsetof(ZJsonObject, capacity) == 4 && offsetof(ZJsonObject, members) == 8);
HOLDS(sizeof(ZJsonMember) == 16 && offsetof(ZJsonMember, name) == 0 && offsetof(ZJsonMember, value) == 8);

/* Reads through every field; the C++ side compares. */
int64_t sum_in_c(const ZJsonExpression *document);
int64_t sum_in_c(const ZJsonExpression *document) {
  const ZJsonObject *object = document->root->object;
  int64_t sum = 0;
  for (int32_t i = 0; i < object->count; ++i) {
    const ZJsonMember *member = object->members[i];
    if (member->value->type == ZJSON_INTEGER) sum += member->value->integer;
    if (member->value->type == ZJSON_BOOL) sum += member->value->boolean;
    if (member->value->type == ZJSON_NUMBER) sum += (int64_t)member->value->number;
    if (member->value->type == ZJSON_STRING) sum += member->value->string[0];
    if (member->value->type == ZJSON_ARRAY) sum += member->value->array->items[0]->integer;
  }
  return sum;
}
