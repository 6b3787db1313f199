// The pixels of one picture in the layout that the library treats: interleaved RGB, 8 or 16 bits,
// both sizes even. Alpha is kept beside it, in the samples of its file, and is never changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vx::cli {

/// The library reads axes in pairs and leaves an odd last row or column alone (or, in its tiled
/// path, an odd first one empty). So an odd axis is padded by one repeated edge, and the file that
/// is written shows width x height of it.
///
/// 16-bit samples run 0..32768 in the library. A file's v becomes v * 32768 / 65535, rounded, and
/// at most 32767: a flat plane of exactly 1.0 would fall into a cell that the bilateral grid
/// overwrites, and edge enhancement ends there. 32767 comes back as the file's white.
class Raster {
 public:
  /// `depth` 8 or 16 bits in the library; `alphaDepth` 0 (none), 8 or 16 as in the file.
  /// Throws std::bad_alloc.
  Raster(int width, int height, int depth, int alphaDepth);

  int width() const { return width_; }
  int height() const { return height_; }
  int paddedWidth() const { return width_ + (width_ & 1); }
  int paddedHeight() const { return height_ + (height_ & 1); }
  int depth() const { return depth_; }
  int alphaDepth() const { return alphaDepth_; }
  int rowBytes() const { return paddedWidth() * 3 * (depth_ / 8); }
  /// In the unit of vxUnblock and vxYUVEdgeRGB: bytes at 8 bits, samples at 16.
  int rowStep() const { return paddedWidth() * 3; }
  /// The pixel format of vxAdjustRgb and vxDenoiseEstNoise.
  int libraryFormat() const { return depth_ == 8 ? 1 : 3; }
  std::uint8_t* pixels() { return pixels_.get(); }

  /// Takes `count` pixels of a file's row from column x on. The source has 1 or 3 colour samples
  /// of `sourceDepth` bits per pixel, followed by an alpha sample when the raster has alpha.
  void takeRow(const void* source, int sourceDepth, int colours, int x, int y, int count);

  /// Makes an 8-bit raster one of 16 bits. Throws std::bad_alloc.
  void deepen();

  /// Repeats the last column and row into the padding, once every row is there.
  void pad();

  /// Gives `count` pixels of row y from column x on as a file wants them: 1 or 3 colours of
  /// `targetDepth` bits, then alpha if `withAlpha`. One colour is the luma of Rec. 709 (R, G and B
  /// themselves where they are equal).
  void giveRow(void* target, int targetDepth, int colours, bool withAlpha, int x, int y,
               int count) const;

  /// Puts the pixels on a colour (0xRRGGBB) by their alpha, which is then gone: a * pixel + (1 - a)
  /// * colour (T. Porter and T. Duff, 1984), rounded.
  void flatten(unsigned long colour);

  /// True when every alpha sample is at its top: nothing is lost without the channel.
  bool opaque() const;

 private:
  std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::ptrdiff_t>(y) * rowBytes(); }
  const std::uint8_t* row(int y) const {
    return pixels_.get() + static_cast<std::ptrdiff_t>(y) * rowBytes();
  }

  int width_, height_, depth_, alphaDepth_;
  std::unique_ptr<std::uint8_t[]> pixels_;
  std::unique_ptr<std::uint8_t[]> alpha_;
};

}  // namespace vx::cli
