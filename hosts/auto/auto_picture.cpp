#include "hosts/auto/auto_picture.h"

VxAutoPicture vxAutoPicture(const void* pixels, int format, int rowStep, int width, int height) {
  const bool deep = format == 3 || format == 6;
  const bool extra = format == 5 || format == 6;  // a channel in front of the colours
  const bool known = format == 1 || format == 3 || extra;
  if (!known || pixels == nullptr) return {};
  const ptrdiff_t sample = deep ? 2 : 1;
  return {static_cast<const unsigned char*>(pixels) + (extra ? sample : 0),
          sample,
          sample * (extra ? 4 : 3),
          rowStep,
          width,
          height,
          deep ? 32768 : 255};
}
