#include "prim/pyramid.h"

#include <climits>

namespace vx::prim {
namespace {

// Accepted beside kPyramid32f.
constexpr int kOtherTypes[] = {1, 3};

// `rows` rows of `pixels` pixels, each padded to 16 bytes, and room to align the first.
int bufferSize(int width, std::int64_t pixels, int rows, int dataType, int channels, int* size) {
  if (!size) return kStatusNullPtr;
  if (width < 1) return kStatusBadSize;
  if (dataType != kPyramid32f && dataType != kOtherTypes[0] && dataType != kOtherTypes[1])
    return kStatusBadDataType;
  if (channels != 1 && channels != 3) return kStatusBadChannels;
  const std::int64_t bytes = ((pixels * channels * 4 + 15) & ~std::int64_t{15}) * rows + 32;
  if (bytes > INT_MAX) return kStatusBadSize;
  *size = static_cast<int>(bytes);
  return kStatusOk;
}

}  // namespace

int primPyrDownGetBufSize(int width, int dataType, int channels, int* size) {
  return bufferSize(width, width, 6, dataType, channels, size);
}

int primPyrUpGetBufSize(int width, int dataType, int channels, int* size) {
  return bufferSize(width, std::int64_t{width} * 2, 3, dataType, channels, size);
}

}  // namespace vx::prim
