// Documents and values: their making.
#include "zjson_expression.h"

#include <cstdlib>
#include <cstring>

#include "escape.hpp"
#include "fixed_text.hpp"
#include "records.hpp"
#include "zfxmemory.h"

namespace zorvcrt {

namespace {

char *new_escaped_text(std::string_view text) {
  const EscapeGrowth growth = escape_growth(text);
  if (growth.counted == 0) return new_text(text);
  auto *escaped = static_cast<char *>(std::malloc(text.size() + growth.written + 1));
  if (escaped != nullptr) *write_escaped(text, escaped) = '\0';
  return escaped;
}

bool holds(const ZJsonValue *value, const void *container) {
  return (value->type == ZJSON_ARRAY && value->array == container) ||
         (value->type == ZJSON_OBJECT && value->object == container);
}

}  // namespace

char *new_stored_text(std::string_view text) {
  return new_escaped_text(without_quotes(text, kStringQuotes));
}

ZJsonValue *new_string_value(std::string_view text) {
  ZJsonValue *value = new_value(ZJSON_STRING);
  if (value == nullptr) return nullptr;
  value->string = new_stored_text(text);
  if (value->string != nullptr) return value;
  std::free(value);
  return nullptr;
}

}  // namespace zorvcrt

ZJsonExpression *ZJsonExpression_New(void) {
  return zorvcrt::new_record<ZJsonExpression>();
}

void ZJsonExpression_SetErrorMessage(ZJsonExpression *document, const char *message) {
  if (document != nullptr && message != nullptr) document->errorMessage = ZfxStrDup(message);
}

void ZJsonExpression_SetRoot(ZJsonExpression *document, int32_t type, void *container) {
  if (document == nullptr) return;
  if (ZJsonValue *root = document->root; root != nullptr) {
    // Releasing what the caller hands over to be stored would leave the document with a released container.
    if (root == container || (container != nullptr && zorvcrt::holds(root, container))) return;
    document->root = nullptr;
    ZJsonValue_Delete(root);
  }
  if (type == ZJSON_OBJECT) document->root = ZJsonValue_NewObject(static_cast<ZJsonObject *>(container));
  if (type == ZJSON_ARRAY) document->root = ZJsonValue_NewArray(static_cast<ZJsonArray *>(container));
}

ZJsonValue *ZJsonValue_New(void) {
  return zorvcrt::new_value(ZJSON_NULL);
}

ZJsonValue *ZJsonValue_NewNull(void) {
  return zorvcrt::new_value(ZJSON_NULL);
}

ZJsonValue *ZJsonValue_NewBool(int32_t boolean) {
  ZJsonValue *value = zorvcrt::new_value(ZJSON_BOOL);
  if (value != nullptr) value->boolean = boolean != 0 ? 1 : 0;
  return value;
}

ZJsonValue *ZJsonValue_NewInt(int32_t integer) {
  return ZJsonValue_NewInteger(integer);
}

ZJsonValue *ZJsonValue_NewInteger(int64_t integer) {
  ZJsonValue *value = zorvcrt::new_value(ZJSON_INTEGER);
  if (value != nullptr) value->integer = integer;
  return value;
}

ZJsonValue *ZJsonValue_NewNumber(double number) {
  ZJsonValue *value = zorvcrt::new_value(ZJSON_NUMBER);
  if (value != nullptr) value->number = number;
  return value;
}

ZJsonValue *ZJsonValue_NewObject(ZJsonObject *object) {
  ZJsonValue *value = zorvcrt::new_value(ZJSON_OBJECT);
  if (value != nullptr) value->object = object;
  return value;
}

ZJsonValue *ZJsonValue_NewArray(ZJsonArray *array) {
  ZJsonValue *value = zorvcrt::new_value(ZJSON_ARRAY);
  if (value != nullptr) value->array = array;
  return value;
}

ZJsonValue *ZJsonValue_NewStringL(const char *text, int32_t length) {
  if (text == nullptr || length < 0) return zorvcrt::new_string_value("");
  return zorvcrt::new_string_value({text, ::strnlen(text, static_cast<std::size_t>(length))});
}

ZJsonValue *ZJsonValue_NewString(const char *text) {
  return zorvcrt::new_string_value(zorvcrt::view_of(text));
}
