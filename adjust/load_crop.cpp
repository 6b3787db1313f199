#include "adjust/load_crop.h"

#include <cstddef>
#include <cstdint>

#include "adjust/host_pixels.h"
#include "prim/memory.h"

namespace vx {

CropAxis cropAxis(int size) {
  constexpr int kMost = 2048;
  if (size < kMost) return {0, size & ~3};
  return {(size - kMost) / 4 * 2, kMost};
}

int loadCrop(int format, const void* pixels, int rowStep, const CropAxis& x, const CropAxis& y,
             std::unique_ptr<GIMG<float>> planes[3]) {
  GIMG<float>* targets[3];
  for (int c = 0; c < 3; ++c) {
    auto& plane = planes[c];
    if (plane == nullptr || plane->width != x.size || plane->height != y.size)
      plane = std::make_unique<GIMG<float>>(x.size, y.size);
    targets[c] = plane.get();
  }
  const auto* first = static_cast<const std::uint8_t*>(pixels);
  if (first != nullptr)
    first += std::ptrdiff_t{rowStep} * y.start + std::ptrdiff_t{bytesPerPixel(format)} * x.start;
  if (first == nullptr || readHostPlanes(format, first, rowStep, targets) == 0) {
    for (const GIMG<float>* plane : targets)
      prim::primSet_32f_C1R(0.0f, plane->data, plane->step, x.size, y.size);
  }
  return kCropLoaded;
}

}  // namespace vx
