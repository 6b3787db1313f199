#include "prim/kernels/jpeg_lanes.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

#if !defined(VX_KERNEL_SCALAR)

// (a + b) >> 1 of bytes.
template <class L>
[[gnu::always_inline]] inline typename L::V averageDown(typename L::V a, typename L::V b,
                                                        typename L::V one) {
  return L::sub8(L::average8(a, b), L::bitAnd(L::bitXor(a, b), one));
}

// The rounding of nested byte averages is that of the filter: (3a + b + 1) >> 2 is the lower
// average of a with the upper one of a and b, (3a + b + 2) >> 2 the other way round.
template <class L>
[[gnu::always_inline]] inline void upsample(const std::uint8_t* src, std::uint8_t* dst) {
  using V = typename L::V;
  const V one = L::set(0x0101);
  const V here = L::load(src);
  const V even = averageDown<L>(here, L::average8(here, L::load(src - 1)), one);
  const V odd = L::average8(here, averageDown<L>(here, L::load(src + 1), one));
  L::storeZipped(dst, L::low8(even, odd), L::high8(even, odd));
}

// The decoder's colour formulas in 16-bit lanes; that they hold for every byte and every pair is
// tested. The product of G needs 32 bits. 32512 is added so that saturation limits to 255, and
// taken away so that it limits to 0.
template <class L>
[[gnu::always_inline]] inline void addYcc(const std::uint8_t* y, const std::uint8_t* cb,
                                          const std::uint8_t* cr, std::uint16_t* sumR,
                                          std::uint16_t* sumG, std::uint16_t* sumB) {
  using V = typename L::V;
  constexpr int kTop = 32767 - 255;
  const V luma = L::widen(y), blue = L::widen(cb), red = L::widen(cr);
  const V top = L::set(kTop);
  const V r = L::mulHigh(L::add(L::template shiftLeft<2>(red), L::set(-7)), L::set(22970));
  const V b = L::mulHigh(L::add(L::template shiftLeft<5>(blue), L::set(-123)), L::set(3629));
  const V factors = L::set32(static_cast<int>((18734u << 16) | (65536u - 22554u)));
  const V offset = L::set32(8877496);
  const V g =
      L::pack32(L::template shift32<16>(L::add32(L::madd(L::low16(blue, red), factors), offset)),
                L::template shift32<16>(L::add32(L::madd(L::high16(blue, red), factors), offset)));
  const auto put = [&](std::uint16_t * sum, V colour, V base) __attribute__((always_inline)) {
    L::store(sum, L::add(L::load(sum), L::subSatU(L::addSat(base, colour), top)));
  };
  put(sumR, r, L::add(luma, L::set(kTop - 177)));
  put(sumG, L::sub(g, red), L::add(luma, top));
  put(sumB, b, L::add(luma, L::set(kTop - 220)));
}

#if defined(__SSSE3__)

// Bytes of channel c that 16 pixels have in the i-th vector of their 48 bytes, in their places.
struct ChannelMasks {
  alignas(16) std::uint8_t at[3][3][16];
};
constexpr ChannelMasks channelMasks() {
  ChannelMasks masks{};
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < 3; ++i)
      for (int pixel = 0; pixel < 16; ++pixel) {
        const int byte = 3 * pixel + c;
        masks.at[c][i][pixel] = static_cast<std::uint8_t>(byte / 16 == i ? byte % 16 : 0x80);
      }
  return masks;
}
constexpr ChannelMasks kChannelMasks = channelMasks();

// Every product and sum may wrap: what the formulas give before their shift fits 16 bits, but for
// pure blue and red, where half of it and half of the rounding do.
template <class L>
[[gnu::always_inline]] inline void storeYcc(typename L::V r, typename L::V g, typename L::V b,
                                            std::int16_t* y, std::int16_t* cb, std::int16_t* cr) {
  const auto sum = [&](int red, int green, int blue) __attribute__((always_inline)) {
    return L::add(L::add(L::mulLow(r, L::set(red)), L::mulLow(g, L::set(green))),
                  L::mulLow(b, L::set(blue)));
  };
  const auto rounded = [](typename L::V v) __attribute__((always_inline)) {
    return L::template shiftRight<7>(L::add(L::template shiftRight<1>(v), L::set(64)));
  };
  L::store(y, L::template shiftRight<8>(L::sub(sum(77, 150, 29), L::set(32640))));
  L::store(cb, rounded(sum(-43, -85, 128)));
  L::store(cr, rounded(sum(128, -107, -21)));
}

inline void convert16(const std::uint8_t* rgb, std::int16_t* y, std::int16_t* cb,
                      std::int16_t* cr) {
  __m128i in[3], channel[3];
  for (int i = 0; i < 3; ++i) in[i] = Lanes128::load(rgb + 16 * i);
  for (int c = 0; c < 3; ++c) {
    const auto part = [&](int i) __attribute__((always_inline)) {
      return _mm_shuffle_epi8(in[i], Lanes128::load(kChannelMasks.at[c][i]));
    };
    channel[c] = _mm_or_si128(_mm_or_si128(part(0), part(1)), part(2));
  }
#if defined(__AVX2__)
  storeYcc<Lanes256>(_mm256_cvtepu8_epi16(channel[0]), _mm256_cvtepu8_epi16(channel[1]),
                     _mm256_cvtepu8_epi16(channel[2]), y, cb, cr);
#else
  const __m128i zero = _mm_setzero_si128();
  storeYcc<Lanes128>(Lanes128::low8(channel[0], zero), Lanes128::low8(channel[1], zero),
                     Lanes128::low8(channel[2], zero), y, cb, cr);
  storeYcc<Lanes128>(Lanes128::high8(channel[0], zero), Lanes128::high8(channel[1], zero),
                     Lanes128::high8(channel[2], zero), y + 8, cb + 8, cr + 8);
#endif
}

#endif
#endif

}  // namespace

int primJpegYcc_8u16s(const std::uint8_t* rgb, std::int16_t* y, std::int16_t* cb, std::int16_t* cr,
                      int length) {
  if (const int status = checkVector(length, rgb, y, cb, cr)) return status;
  std::ptrdiff_t i = 0;
#if defined(__SSSE3__) && !defined(VX_KERNEL_SCALAR)
  for (; i + 16 <= length; i += 16) convert16(rgb + 3 * i, y + i, cb + i, cr + i);
#endif
  VX_INDEPENDENT
  for (; i < length; ++i) {
    const int r = rgb[3 * i], g = rgb[3 * i + 1], b = rgb[3 * i + 2];
    y[i] = static_cast<std::int16_t>((77 * r + 150 * g + 29 * b - 32640) >> 8);
    cb[i] = static_cast<std::int16_t>((-43 * r - 85 * g + 128 * b + 128) >> 8);
    cr[i] = static_cast<std::int16_t>((128 * r - 107 * g - 21 * b + 128) >> 8);
  }
  return kStatusOk;
}

int primJpegUpsample_8u(const std::uint8_t* src, std::uint8_t* dst, int length) {
  if (const int status = checkVector(length, src, dst)) return status;
  int i = 0;
#if !defined(VX_KERNEL_SCALAR)
  constexpr int kWide = 16 * WideLanes::kGroups;
  for (; i + kWide <= length; i += kWide) upsample<WideLanes>(src + i, dst + 2 * std::ptrdiff_t{i});
  for (; i + 16 <= length; i += 16) upsample<Lanes128>(src + i, dst + 2 * std::ptrdiff_t{i});
#endif
  for (; i < length; ++i) {
    const int here = 3 * src[i];
    std::uint8_t* out = dst + 2 * std::ptrdiff_t{i};
    out[0] = static_cast<std::uint8_t>((here + src[i - 1] + 1) >> 2);
    out[1] = static_cast<std::uint8_t>((here + src[i + 1] + 2) >> 2);
  }
  return kStatusOk;
}

int primJpegUpsampleRows_8u(const std::uint8_t* near, const std::uint8_t* far, std::uint8_t* dst,
                            int length) {
  if (const int status = checkVector(length, near, far, dst)) return status;
  VX_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < length; ++i) {
    const int before = 3 * near[i - 1] + far[i - 1];
    const int here = 3 * (3 * near[i] + far[i]);
    const int behind = 3 * near[i + 1] + far[i + 1];
    dst[2 * i] = static_cast<std::uint8_t>((here + before + 8) >> 4);
    dst[2 * i + 1] = static_cast<std::uint8_t>((here + behind + 7) >> 4);
  }
  return kStatusOk;
}

int primJpegAddYcc_8u16u(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                         std::uint16_t* sumR, std::uint16_t* sumG, std::uint16_t* sumB,
                         int length) {
  if (const int status = checkVector(length, y, cb, cr, sumR, sumG, sumB)) return status;
  int i = 0;
#if !defined(VX_KERNEL_SCALAR)
  constexpr int kWide = 8 * WideLanes::kGroups;
  for (; i + kWide <= length; i += kWide)
    addYcc<WideLanes>(y + i, cb + i, cr + i, sumR + i, sumG + i, sumB + i);
  for (; i + 8 <= length; i += 8)
    addYcc<Lanes128>(y + i, cb + i, cr + i, sumR + i, sumG + i, sumB + i);
#endif
  for (; i < length; ++i) {
    const int r = y[i] + ((91881 * cr[i] - 11760828) >> 16);
    const int g = y[i] + ((-22554 * cb[i] - 46802 * cr[i] + 8877496) >> 16);
    const int b = y[i] + ((116130 * cb[i] - 14864613) >> 16);
    sumR[i] = static_cast<std::uint16_t>(sumR[i] + saturated<std::uint8_t>(r));
    sumG[i] = static_cast<std::uint16_t>(sumG[i] + saturated<std::uint8_t>(g));
    sumB[i] = static_cast<std::uint16_t>(sumB[i] + saturated<std::uint8_t>(b));
  }
  return kStatusOk;
}

int primJpegAdd_8u16u(const std::uint8_t* src, std::uint16_t* srcDst, int length) {
  if (const int status = checkVector(length, src, srcDst)) return status;
  VX_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < length; ++i)
    srcDst[i] = static_cast<std::uint16_t>(srcDst[i] + src[i]);
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
