/* Parses a JSON text, reads and edits the document through its records, and prints it again. */
#include <stdio.h>
#include <string.h>
#include <zorvcrt.h>

static void report_name_and_price(const ZJsonObject *product) {
  const ZJsonMember *name = ZJsonObject_GetMember(product, "name");
  const ZJsonMember *price = ZJsonObject_GetMember(product, "price");
  if (name == NULL || name->value->type != ZJSON_STRING) return;
  if (price == NULL || price->value->type != ZJSON_NUMBER) return;
  printf("%s costs %.2f\n", name->value->string, price->value->number);
}

static void add_warranty(ZJsonObject *product) {
  ZJsonObject *warranty = ZJsonObject_NewSimple(ZJSON_INTEGER, "years", (int64_t)2, ZJSON_BOOL, "parts", 1,
                                                ZJSON_STRING, "note", "see \"terms\"", ZJSON_END);
  ZJsonObject_Replace(product, ZJsonMember_New("warranty", ZJsonValue_NewObject(warranty)));
}

static ZJsonExpression *parse(const char *text) {
  return ZJsonExpression_Parse(text, (int32_t)strlen(text));
}

int main(void) {
  ZJsonExpression *document =
      parse("{ 'name': 'lamp', 'price': 24.25, 'tags': ['home', 'light'], 'old': null }");
  if (document == NULL || document->root == NULL) return 1;
  ZJsonObject *product = document->root->object; /* the text begins with a brace */
  report_name_and_price(product);
  ZJsonObject_DeleteMember(product, "old");
  add_warranty(product);

  char *text = NULL;
  ZJsonExpression_ToString(document, &text, 1);
  puts(text);
  ZfxMemFree(text);
  ZJsonExpression_Delete(document);

  ZJsonExpression *broken = parse("{\"a\" 1}");
  if (broken == NULL) return 1;
  puts(broken->errorMessage);
  ZJsonExpression_Delete(broken);
  return 0;
}
