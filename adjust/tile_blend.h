#pragma once

#include <array>
#include <optional>

#include "adjust/host_callbacks.h"
#include "adjust/host_pixels.h"
#include "frame/img.h"

namespace vx {

/// A float plane of the whole picture, in the host's memory or our own; it goes back the way it was
/// got. The host's block need only be aligned to 4 bytes, and its rows are packed.
class BlendPlane {
 public:
  float* data = nullptr;
  int step = 0;  ///< bytes

  explicit BlendPlane(const HostCallbacks& host) : host_(host) {}
  BlendPlane(const BlendPlane&) = delete;
  BlendPlane& operator=(const BlendPlane&) = delete;
  /// Releases; what the host's function throws here is dropped.
  ~BlendPlane();

  /// Asks the host where it offers memory, then our own allocator.
  bool acquire(int width, int height);
  /// Gives the block back; passes on what the host's function throws.
  void release();

 private:
  const HostCallbacks& host_;
  bool fromHost_ = false;
};

/// Blends tiles into a whole picture: each pixel becomes sum(w * v) / (1e-24 + sum(w)) over the
/// tiles that cover it, with w the product of two Bartlett windows over the tile plus 1e-6. A pixel
/// under no tile becomes 0.
class TileBlend {
 public:
  TileBlend(const HostCallbacks& host, int width, int height);

  /// Gets the planes of the whole picture and the weights of a tile. All are asked for, even
  /// when one of them fails.
  bool acquire(int tileWidth, int tileHeight);
  /// Clears the planes and forms the weights; false when memory for that is short.
  bool prepare();
  /// Adds rows from y on of a tile whose first pixel lies at (x0, y0).
  void add(const RgbRows& rows, int y, int x0, int y0);
  /// Divides by the weights, in place, and writes the picture over the host's, of a known format.
  void writeTo(const HostImage& image);
  /// Gives the planes back; passes on what the host's function throws.
  void release();

 private:
  int width_;
  int height_;
  std::array<BlendPlane, 4> planes_;  // three colours, then the weights
  std::optional<GIMG<float>> tileWeight_;
};

}  // namespace vx
