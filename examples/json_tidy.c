/* Checks a JSON document and prints it tidy, from standard input to standard output. */
#include <stdio.h>
#include <zorvcrt.h>

int main(void) {
  ZJsonExpression *document = ZJsonExpression_ParseStream(stdin);
  if (document == NULL) return 1; /* not enough memory */
  if (document->errorMessage != NULL) {
    fprintf(stderr, "%s\n", document->errorMessage); /* "line #1.8: syntax error, ..." */
    ZJsonExpression_Delete(document);
    return 1;
  }
  char *text = NULL;
  ZJsonExpression_ToString(document, &text, 1); /* 0 prints without white space */
  puts(text);
  ZfxMemFree(text);
  ZJsonExpression_Delete(document);
  return 0;
}
