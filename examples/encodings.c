/* Base64 there and back, a uuencoded line, and UCS-2 as UTF-8. */
#include <stdio.h>
#include <zorvcrt.h>

int main(void) {
  const uint16_t units[] = {'2', ' ', 0x20AC};
  char *text = NULL;
  void *bytes = NULL;
  char line[64 + 1] = ""; /* one byte more than the size that is given */
  uint32_t length = ZfxBase64Encode("Man and more", 12, &text);

  printf("%s (%u)\n", text, (unsigned)length);
  length = ZfxBase64Decode(text, length, &bytes);
  printf("%.*s\n", (int)length, (const char *)bytes);
  ZfxMemFree(bytes);
  ZfxMemFree(text);

  if (zfx_uuencode("Cat", 3, line, 64) == 0) printf("%s", line);

  if (Ucs2ToUtf8(units, 3, &text) == 5) printf("%s\n", text);
  ZfxMemFree(text);
  return 0;
}
