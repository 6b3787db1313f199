/* A host of the installed library: makes a small picture brighter. */
#include <stdio.h>
#include <string.h>
#include <vxicore26.h>

int main(void) {
  unsigned char pixels[16 * 16 * 3];
  memset(pixels, 100, sizeof pixels);
  const int result =
      vxAdjustRgb(pixels, 1, 16 * 3, 16, 16, 1, NULL, NULL, NULL, NULL, 0, 0, 0,
                  1.5f /* lumaGamma */, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0, NULL, 0, 0, 0);
  printf("result %d, 100 became %d\n", result, pixels[0]);
  return result == 1 && pixels[0] > 100 ? 0 : 1;
}
