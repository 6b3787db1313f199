#include "edge/enh_edge.h"

#include <utility>

#include "edge/edge_plane.h"

namespace vx {

EnhEdge::EnhEdge(float sigmaX, float sigmaY, float floor, double scalingX, double scalingY)
    : blurSigmaX(sigmaX),
      blurSigmaY(sigmaY),
      rangeFloor(floor < 1e-5f ? 1e-5f : floor),
      scaleX(scalingX),
      scaleY(scalingY) {}

EnhEdge::~EnhEdge() = default;

int EnhEdge::enhanceAll(EdgePlane& Y, EdgePlane& U, EdgePlane& V) {
  // The gains are tested against 1 and the sigmas against 0.45, although the filters start at 0.4.
  if (baseGain > 1.0f || adaptiveGain > 1.0f || blurSigmaX > 0.45f || blurSigmaY > 0.45f) {
    EdgePlane enhanced;
    enhanceLuma(Y, enhanced);
    swapPlanes(Y, enhanced);
  }
  if (chromaBlurX > 0.4f || chromaBlurY > 0.4f) {
    blurChroma(U, chromaBlurX, chromaBlurY);
    blurChroma(V, chromaBlurX, chromaBlurY);
  }
  if (chromaShiftX != 0 || chromaShiftY != 0) shiftChroma(U, V);
  if (alignSigmaX > 0.4f || alignSigmaY > 0.4f) {
    EdgePlane outU;
    EdgePlane outV;
    alignChroma({alignSigmaX, alignSigmaY, alignThreshold}, Y, U, V, outU, outV);
    swapPlanes(U, outU);
    swapPlanes(V, outV);
  }
  return 1;
}

void EnhEdge::copyBorder(const EdgePlane& source, EdgePlane& destination, int bw, int bh) {
  const int width = source.width < destination.width ? source.width : destination.width;
  const int height = source.height < destination.height ? source.height : destination.height;
  copyFrame(source.data, source.step, destination.data, destination.step, width, height, bw, bh);
}

}  // namespace vx
