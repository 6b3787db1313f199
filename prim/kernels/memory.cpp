#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// memmove picks its own code for the processor, and takes a copy of an image onto itself.
void copyRows(const void* src, int srcStep, void* dst, int dstStep, std::ptrdiff_t rowBytes,
              int height) {
  const auto* in = static_cast<const char*>(src);
  auto* out = static_cast<char*>(dst);
  if (srcStep == rowBytes && dstStep == rowBytes) {
    rowBytes *= height;
    height = 1;
  }
  for (int y = 0; y < height; ++y)
    __builtin_memmove(row(out, dstStep, y), row(in, srcStep, y),
                      static_cast<std::size_t>(rowBytes));
}

template <int kPixelBytes>
int copyImage(const void* src, int srcStep, void* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  copyRows(src, srcStep, dst, dstStep, std::ptrdiff_t{width} * kPixelBytes, height);
  return kStatusOk;
}

// Every element is stored: a store that depends on the mask is not vectorised.
template <class T>
int copyUnderMask(const T* src, int srcStep, T* dst, int dstStep, int width, int height,
                  const std::uint8_t* mask, int maskStep) {
  if (const int status = checkImage(width, height, src, dst, mask)) return status;
  for (int y = 0; y < height; ++y) {
    const T* in = row(src, srcStep, y);
    const std::uint8_t* select = row(mask, maskStep, y);
    T* out = row(dst, dstStep, y);
    for (int x = 0; x < width; ++x) {
      const T moved = in[x];
      const T kept = out[x];
      out[x] = select[x] != 0 ? moved : kept;
    }
  }
  return kStatusOk;
}

// pixels >= 1; the bytes filled double, so that a border costs a few copies.
void repeatPixel(char* out, const char* pixel, std::ptrdiff_t pixelBytes, std::ptrdiff_t pixels) {
  if (pixels < 1) return;
  __builtin_memcpy(out, pixel, static_cast<std::size_t>(pixelBytes));
  const std::ptrdiff_t bytes = pixels * pixelBytes;
  for (std::ptrdiff_t done = pixelBytes; done < bytes;) {
    const std::ptrdiff_t more = done < bytes - done ? done : bytes - done;
    __builtin_memcpy(out + done, out, static_cast<std::size_t>(more));
    done += more;
  }
}

template <int kPixelBytes>
int copyReplicateBorder(const void* src, int srcStep, int srcWidth, int srcHeight, void* dst,
                        int dstStep, int dstWidth, int dstHeight, int top, int left) {
  if (!src || !dst) return kStatusNullPtr;
  if (emptySize(srcWidth, srcHeight) || emptySize(dstWidth, dstHeight)) return kStatusBadSize;
  // Not negative, so that the differences cannot overflow.
  if (top < 0 || left < 0 || top > dstHeight - srcHeight || left > dstWidth - srcWidth)
    return kStatusBadSize;
  if (srcStep < 1 || dstStep < 1) return kStatusBadStep;

  const std::ptrdiff_t leftBytes = std::ptrdiff_t{left} * kPixelBytes;
  const std::ptrdiff_t srcBytes = std::ptrdiff_t{srcWidth} * kPixelBytes;
  const std::ptrdiff_t rowBytes = std::ptrdiff_t{dstWidth} * kPixelBytes;
  const int right = dstWidth - srcWidth - left;
  auto* out = static_cast<char*>(dst);
  for (int y = 0; y < srcHeight; ++y) {
    const char* in = row(static_cast<const char*>(src), srcStep, y);
    char* to = row(out, dstStep, top + y);
    repeatPixel(to, in, kPixelBytes, left);
    __builtin_memcpy(to + leftBytes, in, static_cast<std::size_t>(srcBytes));
    repeatPixel(to + leftBytes + srcBytes, in + srcBytes - kPixelBytes, kPixelBytes, right);
  }
  const int last = top + srcHeight - 1;
  copyRows(row(out, dstStep, top), 0, out, dstStep, rowBytes, top);
  if (last + 1 < dstHeight)
    copyRows(row(out, dstStep, last), 0, row(out, dstStep, last + 1), dstStep, rowBytes,
             dstHeight - 1 - last);
  return kStatusOk;
}

}  // namespace

int primCopy_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height) {
  return copyImage<1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_8u_C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height) {
  return copyImage<3>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                     int width, int height) {
  return copyImage<2>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                     int height) {
  return copyImage<4>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                     int height) {
  return copyImage<12>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_8u_C1MR(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                     int width, int height, const std::uint8_t* mask, int maskStep) {
  return copyUnderMask(src, srcStep, dst, dstStep, width, height, mask, maskStep);
}

int primCopy_32f_C1MR(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                      const std::uint8_t* mask, int maskStep) {
  return copyUnderMask(src, srcStep, dst, dstStep, width, height, mask, maskStep);
}

int primSet_8u_C1R(std::uint8_t value, std::uint8_t* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, dst)) return status;
  for (int y = 0; y < height; ++y)
    __builtin_memset(row(dst, dstStep, y), value, static_cast<std::size_t>(width));
  return kStatusOk;
}

int primSet_32f_C1R(float value, float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, dst)) return status;
  for (int y = 0; y < height; ++y) {
    float* out = row(dst, dstStep, y);
#pragma GCC unroll 4
    for (int x = 0; x < width; ++x) out[x] = value;
  }
  return kStatusOk;
}

int primSet_16s_C1MR(std::int16_t value, std::int16_t* dst, int dstStep, int width, int height,
                     const std::uint8_t* mask, int maskStep) {
  if (const int status = checkImage(width, height, dst, mask)) return status;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* select = row(mask, maskStep, y);
    Unaligned16s* out = reinterpret_cast<Unaligned16s*>(row(dst, dstStep, y));
    for (int x = 0; x < width; ++x) {
      const std::int16_t kept = out[x];
      out[x] = select[x] != 0 ? value : kept;
    }
  }
  return kStatusOk;
}

int primSet_32f_C3R(const float* value, float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, value, dst)) return status;

  const float v0 = value[0];
  const float v1 = value[1];
  const float v2 = value[2];
  for (int y = 0; y < height; ++y) {
    float* out = row(dst, dstStep, y);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      out[3 * x] = v0;
      out[3 * x + 1] = v1;
      out[3 * x + 2] = v2;
    }
  }
  return kStatusOk;
}

int primCopyReplicateBorder_32f_C1R(const float* src, int srcStep, int srcWidth, int srcHeight,
                                    float* dst, int dstStep, int dstWidth, int dstHeight, int top,
                                    int left) {
  return copyReplicateBorder<4>(src, srcStep, srcWidth, srcHeight, dst, dstStep, dstWidth,
                                dstHeight, top, left);
}

int primCopyReplicateBorder_8u_C3R(const std::uint8_t* src, int srcStep, int srcWidth,
                                   int srcHeight, std::uint8_t* dst, int dstStep, int dstWidth,
                                   int dstHeight, int top, int left) {
  return copyReplicateBorder<3>(src, srcStep, srcWidth, srcHeight, dst, dstStep, dstWidth,
                                dstHeight, top, left);
}

}  // namespace vx::prim::VX_VARIANT
