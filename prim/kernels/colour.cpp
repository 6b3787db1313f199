#include "prim/kernels/shared/interleave3.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Pixels between one deinterleaving and the next; a multiple of every vector length.
constexpr int kStrip = 128;

// Channels of a strip. Zeroed before the first use, so that the loops may run over whole vectors.
struct alignas(64) Strip {
  float c0[kStrip];
  float c1[kStrip];
  float c2[kStrip];
};

// `count` rounded up to whole vectors of any length.
inline int padded(int count) { return (count + 15) & ~15; }

// What the selections leave of a pixel: everything else is arithmetic in double.
struct alignas(64) Selected {
  float max[kStrip];
  float min[kStrip];
  float from[kStrip];  // the hue's numerator is from - take
  float take[kStrip];
  float offset[kStrip];  // degrees of the channel that is the maximum
};

inline void selectHue(const Strip& rgb, Selected& p, int count) {
  for (int i = 0; i < count; ++i) {
    const float r = rgb.c0[i];
    const float g = rgb.c1[i];
    const float b = rgb.c2[i];
    float hi = r < g ? g : r;
    hi = hi < b ? b : hi;
    float lo = g < r ? g : r;
    lo = b < lo ? b : lo;
    p.max[i] = hi;
    p.min[i] = lo;
    const bool isR = r == hi;
    const bool isG = g == hi;
    p.from[i] = isR ? g : isG ? b : r;
    p.take[i] = isR ? b : isG ? r : g;
    // Adding -0 changes no value, not even a negative zero.
    p.offset[i] = isR ? -0.0f : isG ? 120.0f : 240.0f;
  }
}

inline void hlsFromSelected(const Selected& p, Strip& hls, int count) {
  for (int i = 0; i < count; ++i) {
    const double hi = static_cast<double>(p.max[i]);
    const double lo = static_cast<double>(p.min[i]);
    const double delta = hi - lo;
    const double sum = hi + lo;
    const double lightness = 0.5 * sum;
    const double spread = lightness <= 0.5 ? sum : 2.0 - hi - lo;
    const double numerator = static_cast<double>(p.from[i]) - static_cast<double>(p.take[i]);
    double hue = numerator * 60.0 / delta + static_cast<double>(p.offset[i]);
    hue = hue < 0.0 ? hue + 360.0 : hue;
    const bool grey = delta <= 1.1920929e-7;
    hls.c0[i] = static_cast<float>(grey ? 0.0 : hue / 360.0);
    hls.c1[i] = static_cast<float>(lightness);
    hls.c2[i] = static_cast<float>(grey ? 0.0 : delta / spread);
  }
}

// The ramp of one channel at t degrees: up to 60, level to 180, down to 240.
inline float channelAt(float t, float low, float high) {
  const float ramp = low + (high - low) * (t < 60.0f ? t : 240.0f - t) / 60.0f;
  const float fromDown = t < 240.0f ? ramp : low;
  const float fromLevel = t < 180.0f ? high : fromDown;
  return t < 60.0f ? ramp : fromLevel;
}

// `mask` is 0 or all ones. Where `?:` stands the compiler moves the other side's arithmetic behind
// a branch, and does not vectorise it again before AVX2.
inline float select(std::int32_t mask, float yes, float no) {
  const auto y = __builtin_bit_cast(std::int32_t, yes);
  const auto n = __builtin_bit_cast(std::int32_t, no);
  return __builtin_bit_cast(float, (y & mask) | (n & ~mask));
}

inline void rgbFromHls(Strip& p, int count) {
  for (int i = 0; i < count; ++i) {
    const float l = p.c1[i];
    const float saturation = p.c2[i];
    // Of two NaN the hardware keeps the one that the compiler happens to put first. With a NaN in L
    // there must be only that one.
    const float s = l == l ? saturation : l;
    const float h = p.c0[i] * 360.0f;
    const float high = l <= 0.5f ? l * (1.0f + s) : (l + s) - l * s;
    const float low = 2.0f * l - high;
    float hr = h + 120.0f;
    hr = hr >= 360.0f ? hr - 360.0f : hr;
    float hb = h - 120.0f;
    hb = hb < 0.0f ? hb + 360.0f : hb;
    const std::int32_t grey = saturation == 0.0f ? -1 : 0;
    const float r = channelAt(hr, low, high);
    const float g = channelAt(h, low, high);
    const float b = channelAt(hb, low, high);
    p.c0[i] = select(grey, l, r);
    p.c1[i] = select(grey, l, g);
    p.c2[i] = select(grey, l, b);
  }
}

struct ToHls {
  Selected selected;
  void operator()(Strip& strip, int count) {
    selectHue(strip, selected, count);
    hlsFromSelected(selected, strip, count);
  }
};

struct ToRgb {
  void operator()(Strip& strip, int count) { rgbFromHls(strip, count); }
};

struct ToYuv {
  // What a channel adds to each plane, its product running from plane to plane.
  static void addChain(float& y, float& u, float& v, float t, const float (&factors)[3]) {
    t *= factors[0];
    y = t + y;
    t *= factors[1];
    u = t + u;
    t *= factors[2];
    v = t + v;
  }
  void operator()(Strip& strip, int count) {
    for (int i = 0; i < count; ++i) {
      const float r = strip.c0[i];
      float y = r * 0.299f;
      float u = r * -0.147f;
      float v = r * 0.615f;
      addChain(y, u, v, strip.c1[i], {0.587f, -0.49233389f, 1.7820069f});
      addChain(y, u, v, strip.c2[i], {0.114f, 3.8245614f, -0.22935781f});
      strip.c0[i] = y;
      strip.c1[i] = u;
      strip.c2[i] = v;
    }
  }
};

struct YuvToRgb {
  void operator()(Strip& strip, int count) {
    for (int i = 0; i < count; ++i) {
      const float y = strip.c0[i];
      const float u = strip.c1[i];
      const float v = strip.c2[i];
      strip.c0[i] = y + v * 1.14f;
      strip.c1[i] = y + (u + v * 1.4746193f) * -0.394f;
      strip.c2[i] = y + u * 2.032f;
    }
  }
};

// Calls each(x, y, pixels) for strips of at most kStrip pixels.
template <class Each>
inline void overStrips(int width, int height, const Each& each) {
  for (int y = 0; y < height; ++y)
    for (std::ptrdiff_t x = 0; x < width; x += kStrip)
      each(x, y, width - x < kStrip ? static_cast<int>(width - x) : kStrip);
}

// `convert` turns the strip's three channels into the other three.
template <class Convert>
inline int convert3(const float* src, int srcStep, float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  Strip strip = {};
  Convert convert;
  overStrips(width, height, [&](std::ptrdiff_t x, int y, int count) {
    load3(row(src, srcStep, y) + 3 * x, strip.c0, strip.c1, strip.c2, count);
    convert(strip, padded(count));
    store3(strip.c0, strip.c1, strip.c2, row(dst, dstStep, y) + 3 * x, count);
  });
  return kStatusOk;
}

inline void copyStrip(const float* __restrict from, float* __restrict to, int count) {
  for (int i = 0; i < count; ++i) to[i] = from[i];
}

template <class Convert>
inline int toPlanes(const float* src, int srcStep, float* dst0, int step0, float* dst1, int step1,
                    float* dst2, int step2, int width, int height) {
  if (const int status = checkImage(width, height, src, dst0, dst1, dst2)) return status;
  Strip strip = {};
  Convert convert;
  overStrips(width, height, [&](std::ptrdiff_t x, int y, int count) {
    load3(row(src, srcStep, y) + 3 * x, strip.c0, strip.c1, strip.c2, count);
    convert(strip, padded(count));
    copyStrip(strip.c0, row(dst0, step0, y) + x, count);
    copyStrip(strip.c1, row(dst1, step1, y) + x, count);
    copyStrip(strip.c2, row(dst2, step2, y) + x, count);
  });
  return kStatusOk;
}

template <class Convert>
inline int fromPlanes(const float* src0, int step0, const float* src1, int step1, const float* src2,
                      int step2, float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src0, src1, src2, dst)) return status;
  Strip strip = {};
  Convert convert;
  overStrips(width, height, [&](std::ptrdiff_t x, int y, int count) {
    copyStrip(row(src0, step0, y) + x, strip.c0, count);
    copyStrip(row(src1, step1, y) + x, strip.c1, count);
    copyStrip(row(src2, step2, y) + x, strip.c2, count);
    convert(strip, padded(count));
    store3(strip.c0, strip.c1, strip.c2, row(dst, dstStep, y) + 3 * x, count);
  });
  return kStatusOk;
}

}  // namespace

int primRGBToHLS_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height) {
  return convert3<ToHls>(src, srcStep, dst, dstStep, width, height);
}

int primHLSToRGB_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height) {
  return convert3<ToRgb>(src, srcStep, dst, dstStep, width, height);
}

int primRGBToHLS_32f_C3P3R(const float* src, int srcStep, float* hue, int hueStep, float* lightness,
                           int lightnessStep, float* saturation, int saturationStep, int width,
                           int height) {
  return toPlanes<ToHls>(src, srcStep, hue, hueStep, lightness, lightnessStep, saturation,
                         saturationStep, width, height);
}

int primHLSToRGB_32f_P3C3R(const float* hue, int hueStep, const float* lightness, int lightnessStep,
                           const float* saturation, int saturationStep, float* dst, int dstStep,
                           int width, int height) {
  return fromPlanes<ToRgb>(hue, hueStep, lightness, lightnessStep, saturation, saturationStep, dst,
                           dstStep, width, height);
}

int primRGBToYUV_32f_C3P3R(const float* src, int srcStep, float* y, int yStep, float* u, int uStep,
                           float* v, int vStep, int width, int height) {
  return toPlanes<ToYuv>(src, srcStep, y, yStep, u, uStep, v, vStep, width, height);
}

int primYUVToRGB_32f_P3C3R(const float* y, int yStep, const float* u, int uStep, const float* v,
                           int vStep, float* dst, int dstStep, int width, int height) {
  return fromPlanes<YuvToRgb>(y, yStep, u, uStep, v, vStep, dst, dstStep, width, height);
}

int primColorTwist_32f_P3IR(float* const* planes, int step, int width, int height,
                            const float (*twist)[4]) {
  if (!planes) return kStatusNullPtr;
  if (const int status = checkImage(width, height, twist, planes[0], planes[1], planes[2]))
    return status;
  if (step < 1) return kStatusBadStep;
  for (int y = 0; y < height; ++y) {
    float* plane0 = row(planes[0], step, y);
    float* plane1 = row(planes[1], step, y);
    float* plane2 = row(planes[2], step, y);
    for (int x = 0; x < width; ++x) {
      const float p0 = plane0[x];
      const float p1 = plane1[x];
      const float p2 = plane2[x];
      float out[3];
      for (int r = 0; r < 3; ++r) {
        const float v = twist[r][0] * p0 + twist[r][1] * p1 + twist[r][2] * p2 + twist[r][3];
        out[r] = v == v ? v : __builtin_nanf("");
      }
      plane0[x] = out[0];
      plane1[x] = out[1];
      plane2[x] = out[2];
    }
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
