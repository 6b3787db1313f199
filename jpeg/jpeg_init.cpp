#include <new>

#include "jpeg/jpeg.h"
#include "jpeg/jpeg_work.h"

namespace vx {

int jpegInit(JpegProperties* properties) noexcept {
  if (properties == nullptr) return kJpegInvalidProperties;
  *properties = JpegProperties{};
  properties->colorConversion = 1;
  properties->upsampling = 1;
  properties->quality = 75;
  properties->work = new (std::nothrow) JpegWork();
  return properties->work == nullptr ? kJpegNoMemory : kJpegOk;
}

int jpegFree(JpegProperties* properties) noexcept {
  if (properties == nullptr) return kJpegInvalidProperties;
  delete properties->work;
  properties->work = nullptr;
  return kJpegOk;
}

}  // namespace vx
