/* The records as a caller in C sees them. */
#include "zjson_expression.h"

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
