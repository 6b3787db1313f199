#pragma once

namespace vx {

/// The settings of vxYUVEdgeRGB, as the host gives them.
struct EdgeSettings {
  double baseGain;
  double rangeFloor;
  double blurSigmaX;
  double blurSigmaY;
  double adaptiveGain;
  double chromaBlurX;
  double chromaBlurY;
  int chromaShiftX;
  int chromaShiftY;
  double alignSigmaX;
  double alignSigmaY;
  double alignThreshold;
  int edgeReserved;
};

/// Enhances the edges of an interleaved RGB image in place; the work of vxYUVEdgeRGB.
///
/// Computes in float planes (12 bytes a pixel, 24 while chroma is realigned) on the calling thread.
/// @param deep     16-bit samples of 0..32767, read as unsigned, instead of bytes
/// @param rowStep  from row to row, in bytes, when deep in samples; may be negative
/// @return 1
/// @throws MemoryException with the image untouched
int enhanceEdges(bool deep, void* pixels, int rowStep, int width, int height,
                 const EdgeSettings& settings);

}  // namespace vx
