#include "hosts/cli/pictures/raster.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

namespace vx::cli {
namespace {

constexpr unsigned kLibraryTop = 32768;
constexpr unsigned kLibraryLimit = 32767;

// Rounded division; the products stay below 2^32.
constexpr unsigned scale(unsigned value, unsigned numerator, unsigned denominator) {
  return (value * numerator + denominator / 2) / denominator;
}

// Conversion of a sample between the depths of the file and of the library.
template <int fileDepth, int libraryDepth>
constexpr unsigned toLibrary(unsigned value) {
  if constexpr (libraryDepth == 8) {
    static_assert(fileDepth == 8, "the library works at the higher depth of input and output");
    return value;
  } else {
    constexpr unsigned top = fileDepth == 8 ? 255 : 65535;
    return std::min(scale(value, kLibraryTop, top), kLibraryLimit);
  }
}

template <int fileDepth, int libraryDepth>
constexpr unsigned fromLibrary(unsigned value) {
  constexpr unsigned top = fileDepth == 8 ? 255 : 65535;
  if constexpr (libraryDepth == 8) {
    static_assert(fileDepth == 8);
    return value;
  } else {
    // White came in as 32767 and goes out white.
    return value >= kLibraryLimit ? top : scale(value, top, kLibraryTop);
  }
}

unsigned alphaTo(unsigned value, int from, int to) {
  if (from == to) return value;
  return to == 16 ? value * 257 : (value + 128) / 257;
}

// Rec. 709 weights in 1/32768, so that they add up to one exactly.
constexpr unsigned luma(unsigned r, unsigned g, unsigned b) {
  return (r * 6966 + g * 23436 + b * 2366 + 16384) >> 15;
}
static_assert(luma(65535, 65535, 65535) == 65535 && luma(1, 1, 1) == 1);

template <typename T>
inline constexpr int kBits = static_cast<int>(8 * sizeof(T));

template <typename File, typename Library>
void take(const File* source, Library* target, File* alpha, int colours, int count) {
  for (int i = 0; i < count; ++i) {
    for (int c = 0; c < 3; ++c) {
      const unsigned value = source[colours == 3 ? c : 0];
      *target++ = static_cast<Library>(toLibrary<kBits<File>, kBits<Library>>(value));
    }
    source += colours;
    if (alpha) *alpha++ = *source++;
  }
}

template <typename File, typename Library>
void give(const Library* source, File* target, const std::uint8_t* alpha, int alphaDepth,
          int colours, int count) {
  const auto convert = [](Library value) {
    return fromLibrary<kBits<File>, kBits<Library>>(value);
  };
  for (int i = 0; i < count; ++i, source += 3) {
    const unsigned r = convert(source[0]), g = convert(source[1]), b = convert(source[2]);
    if (colours == 3) {
      *target++ = static_cast<File>(r);
      *target++ = static_cast<File>(g);
      *target++ = static_cast<File>(b);
    } else {
      *target++ = static_cast<File>(luma(r, g, b));
    }
    if (!alpha) continue;
    const unsigned value =
        alphaDepth == 8 ? alpha[i] : reinterpret_cast<const std::uint16_t*>(alpha)[i];
    *target++ = static_cast<File>(alphaTo(value, alphaDepth, kBits<File>));
  }
}

}  // namespace

Raster::Raster(int width, int height, int depth, int alphaDepth)
    : width_(width), height_(height), depth_(depth), alphaDepth_(alphaDepth) {
  const auto rows = static_cast<std::size_t>(paddedHeight());
  pixels_ =
      std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(rowBytes()) * rows);
  if (alphaDepth > 0) {
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    alpha_ = std::make_unique_for_overwrite<std::uint8_t[]>(
        count * static_cast<std::size_t>(alphaDepth / 8));
  }
}

void Raster::takeRow(const void* source, int sourceDepth, int colours, int x, int y, int count) {
  std::uint8_t* target = row(y) + static_cast<std::ptrdiff_t>(x) * 3 * (depth_ / 8);
  const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * width_ + x;
  std::uint8_t* alpha = alpha_ ? alpha_.get() + at * (alphaDepth_ / 8) : nullptr;
  if (sourceDepth == 16) {
    take(static_cast<const std::uint16_t*>(source), reinterpret_cast<std::uint16_t*>(target),
         reinterpret_cast<std::uint16_t*>(alpha), colours, count);
  } else if (depth_ == 16) {
    take(static_cast<const std::uint8_t*>(source), reinterpret_cast<std::uint16_t*>(target), alpha,
         colours, count);
  } else {
    take(static_cast<const std::uint8_t*>(source), target, alpha, colours, count);
  }
}

void Raster::deepen() {
  if (depth_ == 16) return;
  const auto rows = static_cast<std::size_t>(paddedHeight());
  const std::size_t count = static_cast<std::size_t>(rowBytes()) * rows;
  auto deep = std::make_unique_for_overwrite<std::uint8_t[]>(2 * count);
  auto* target = reinterpret_cast<std::uint16_t*>(deep.get());
  for (std::size_t i = 0; i < count; ++i)
    target[i] = static_cast<std::uint16_t>(toLibrary<8, 16>(pixels_[i]));
  pixels_ = std::move(deep);
  depth_ = 16;
}

void Raster::pad() {
  const std::ptrdiff_t pixel = 3 * (depth_ / 8);
  if (paddedWidth() != width_) {
    for (int y = 0; y < height_; ++y) {
      std::uint8_t* end = row(y) + width_ * pixel;
      std::memcpy(end, end - pixel, static_cast<std::size_t>(pixel));
    }
  }
  if (paddedHeight() != height_) {
    std::memcpy(row(height_), row(height_ - 1), static_cast<std::size_t>(rowBytes()));
  }
}

void Raster::giveRow(void* target, int targetDepth, int colours, bool withAlpha, int x, int y,
                     int count) const {
  const std::uint8_t* source = row(y) + static_cast<std::ptrdiff_t>(x) * 3 * (depth_ / 8);
  const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * width_ + x;
  const std::uint8_t* alpha = withAlpha && alpha_ ? alpha_.get() + at * (alphaDepth_ / 8) : nullptr;
  if (targetDepth == 16) {
    give(reinterpret_cast<const std::uint16_t*>(source), static_cast<std::uint16_t*>(target), alpha,
         alphaDepth_, colours, count);
  } else if (depth_ == 16) {
    give(reinterpret_cast<const std::uint16_t*>(source), static_cast<std::uint8_t*>(target), alpha,
         alphaDepth_, colours, count);
  } else {
    give(source, static_cast<std::uint8_t*>(target), alpha, alphaDepth_, colours, count);
  }
}

void Raster::flatten(unsigned long colour) {
  const bool deep = depth_ == 16;
  const std::uint64_t alphaTop = alphaDepth_ == 16 ? 65535 : 255;
  std::array<std::uint64_t, 3> behind{};
  for (std::size_t c = 0; c < 3; ++c) {
    const auto byte = static_cast<unsigned>(colour >> (16 - 8 * c) & 255);
    behind[c] = deep ? toLibrary<8, 16>(byte) : byte;
  }
  const auto mix = [&](auto* sample, std::uint64_t alpha) {
    for (std::size_t c = 0; c < 3; ++c) {
      const std::uint64_t sum = alpha * sample[c] + (alphaTop - alpha) * behind[c];
      sample[c] =
          static_cast<std::remove_reference_t<decltype(*sample)>>((sum + alphaTop / 2) / alphaTop);
    }
  };
  std::size_t i = 0;
  for (int y = 0; y < height_; ++y)
    for (std::ptrdiff_t x = 0; x < width_; ++x, ++i) {
      const unsigned alpha =
          alphaDepth_ == 16 ? reinterpret_cast<const std::uint16_t*>(alpha_.get())[i] : alpha_[i];
      if (deep)
        mix(reinterpret_cast<std::uint16_t*>(row(y)) + 3 * x, alpha);
      else
        mix(row(y) + 3 * x, alpha);
    }
  alpha_.reset();
  alphaDepth_ = 0;
}

bool Raster::opaque() const {
  if (!alpha_) return true;
  const std::size_t bytes = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) *
                            static_cast<std::size_t>(alphaDepth_ / 8);
  return std::all_of(alpha_.get(), alpha_.get() + bytes,
                     [](std::uint8_t byte) { return byte == 255; });
}

}  // namespace vx::cli
