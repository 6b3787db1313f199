/* A host in C: makes a picture brighter, and tells how far it is. */
#include <stdio.h>
#include <string.h>
#include <vxicore26.h>

static int report(int position, int total, void* context) {
  (void)context;
  printf("%d of %d\n", position, total);
  return 1; /* 0 would cancel and leave the picture as it was */
}

/* 8-bit interleaved RGB; returns 1 when done. */
static int brighten(unsigned char* pixels, int width, int height) {
  return vxAdjustRgb(pixels, 1, 3 * width, width, height, 1,  // RGB of 8 bits, full size
                     NULL, NULL, report, NULL,                // callbacks
                     0.15f, 200, 0, 0.5f, 0, 0,  // local equalisation, gamma, cut and floor
                     0.2f, 24, 1, 1.3f,          // detail: range, radius, gamma, gain
                     1.3f,                       // sharpening
                     0, 100, 1.1f, 1, 0,         // saturation: equalisation, gain, gamma; hue
                     0, NULL, 0, 0, 0);          // noise, grain, blocks: off
}

int main(void) {
  enum { kWidth = 64, kHeight = 48 };
  unsigned char pixels[kHeight * kWidth * 3];
  memset(pixels, 100, sizeof pixels);
  const int result = brighten(pixels, kWidth, kHeight);
  printf("result %d, 100 became %d\n", result, pixels[0]);
  return result == 1 && pixels[0] > 100 ? 0 : 1;
}
