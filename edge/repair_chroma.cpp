#include <cstdlib>

#include "edge/edge_plane.h"
#include "edge/enh_edge.h"
#include "edge/gauss_kernel7.h"
#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/filter.h"
#include "prim/search.h"
#include "prim/threshold.h"

namespace vx {
namespace {

using namespace prim;

constexpr int kReach = kGaussReach;
constexpr int kMaxRadius = 6;

int radiusOf(float sigma) {
  const int radius = toInt(sigma + 0.4f);
  return radius < 0 ? 0 : radius > kMaxRadius ? kMaxRadius : radius;
}

int boundedShift(int shift) { return shift > 6 ? 7 : shift < -7 ? -7 : shift; }

}  // namespace

int EnhEdge::blurChroma(EdgePlane& plane, float sigmaX, float sigmaY) {
  const int width = plane.width;
  const int height = plane.height;
  if (width < 1 || height < 1) return 1;
  const bool alongX = !(sigmaX <= 0.4f) && width > 2 * kReach;
  const bool alongY = !(sigmaY <= 0.4f) && height > 2 * kReach;
  // A plane too narrow for the horizontal filter is refused by it and keeps all its values.
  if (!(sigmaX <= 0.4f) && !alongX) return 1;
  if (!alongX && !alongY) return 1;

  // Each band is filtered out of a copy of its rows, three more on both sides; those above were
  // overwritten by then and are kept from the band before.
  const int band = tileHeight < height ? tileHeight : height;
  EdgePlane window(width, band + 2 * kReach);
  EdgePlane column(width, band);
  for (int top = 0; top < height; top += band) {
    const int rows = band < height - top ? band : height - top;
    const int above = top < kReach ? top : kReach;
    const int below = height - top - rows < kReach ? height - top - rows : kReach;
    if (above > 0)
      primCopy_32f_C1R(at(window, 0, kReach + band - above), window.step,
                       at(window, 0, kReach - above), window.step, width, above);
    primCopy_32f_C1R(at(plane, 0, top), plane.step, at(window, 0, kReach), window.step, width,
                     rows + below);
    const float* source = at(window, 0, kReach);
    int sourceStep = window.step;
    if (alongY) {
      // Rows closer than three to the top or bottom stay unfiltered.
      const int first = top < kReach ? kReach - top : 0;
      const int last = height - kReach - top < rows ? height - kReach - top : rows;
      primCopy_32f_C1R(source, sourceStep, column.data, column.step, width, rows);
      if (last > first)
        primFilterColumn_32f_C1R(at(window, 0, kReach + first), window.step, at(column, 0, first),
                                 column.step, width, last - first, gaussKernel7(sigmaY), kGaussTaps,
                                 kGaussReach);
      source = column.data;
      sourceStep = column.step;
    }
    if (alongX) {
      primFilterRow_32f_C1R(source + kReach, sourceStep, at(plane, kReach, top), plane.step,
                            width - 2 * kReach, rows, gaussKernel7(sigmaX), kGaussTaps,
                            kGaussReach);
    } else {
      primCopy_32f_C1R(source, sourceStep, at(plane, 0, top), plane.step, width, rows);
    }
  }
  return 1;
}

void EnhEdge::shiftChroma(EdgePlane& U, EdgePlane& V) {
  constexpr int kMargin = 8;
  chromaShiftX = boundedShift(chromaShiftX);
  chromaShiftY = boundedShift(chromaShiftY);
  if (U.width < 1 || U.height < 1) return;
  EdgePlane framed(U.width + 2 * kMargin, U.height + 2 * kMargin);
  for (EdgePlane* plane : {&U, &V}) {
    primCopyReplicateBorder_32f_C1R(plane->data, plane->step, plane->width, plane->height,
                                    framed.data, framed.step, framed.width, framed.height,
                                    kMargin + chromaShiftY, kMargin + chromaShiftX);
    primCopy_32f_C1R(at(framed, kMargin, kMargin), framed.step, plane->data, plane->step,
                     plane->width, plane->height);
  }
}

void EnhEdge::alignChroma(const AlignSettings& settings, const EdgePlane& Y, const EdgePlane& U,
                          const EdgePlane& V, EdgePlane& outU, EdgePlane& outV) {
  const int width = Y.width;
  const int height = Y.height;
  ensureSize(outU, width, height);
  ensureSize(outV, width, height);
  if (width < 1 || height < 1) return;
  EdgePlane reference(width, height);
  primCopy_32f_C1R(Y.data, Y.step, reference.data, reference.step, width, height);
  blurChroma(reference, settings.alignSigmaX, settings.alignSigmaY);
  primCopy_32f_C1R(U.data, U.step, outU.data, outU.step, width, height);
  primCopy_32f_C1R(V.data, V.step, outV.data, outV.step, width, height);

  const int radiusX = radiusOf(settings.alignSigmaX);
  const int radiusY = radiusOf(settings.alignSigmaY);
  EdgePlane best(tileWidth, tileHeight);
  ImageBuffer<std::uint8_t> flat(tileWidth, tileHeight);
  forTiles(radiusX, radiusY, width - radiusX, height - radiusY, tileWidth, tileHeight,
           [&](int x0, int y0, int x1, int y1) {
             const int w = x1 - x0;
             const int h = y1 - y0;
             primSet_32f_C1R(1e9f, best.data, best.step, w, h);
             for (int dy = -radiusY; dy <= radiusY; ++dy) {
               float weights[2 * kMaxRadius + 1];
               for (int dx = -radiusX; dx <= radiusX; ++dx)
                 // Both radii 0: 0 / 0, a NaN that is never better, so all chroma stays.
                 weights[dx + radiusX] = static_cast<float>(
                     (std::abs(dx) + std::abs(dy)) * 0.3 / (radiusX + radiusY) + 1.0);
               const int x = x0 - radiusX;
               const int y = y0 + dy;
               const SearchRow search = {.candidate = at(reference, x, y),
                                         .candidateStep = reference.step,
                                         .target = at(Y, x0, y0),
                                         .targetStep = Y.step,
                                         .weights = weights,
                                         .count = 2 * radiusX + 1,
                                         .best = best.data,
                                         .bestStep = best.step,
                                         .srcU = at(U, x, y),
                                         .srcUStep = U.step,
                                         .srcV = at(V, x, y),
                                         .srcVStep = V.step,
                                         .dstU = at(outU, x0, y0),
                                         .dstUStep = outU.step,
                                         .dstV = at(outV, x0, y0),
                                         .dstVStep = outV.step};
               primSearchRow_32f_C1R(&search, w, h);
             }
             // Where the luminance equals its blur there is no edge to pull the chroma back from.
             primAbsDiff_32f_C1R(at(reference, x0, y0), reference.step, at(Y, x0, y0), Y.step,
                                 best.data, best.step, w, h);
             primCompareC_32f_C1R(best.data, best.step, settings.alignThreshold, flat.data,
                                  flat.step, w, h, kCompareLess);
             primCopy_32f_C1MR(at(U, x0, y0), U.step, at(outU, x0, y0), outU.step, w, h, flat.data,
                               flat.step);
             primCopy_32f_C1MR(at(V, x0, y0), V.step, at(outV, x0, y0), outV.step, w, h, flat.data,
                               flat.step);
           });
}

}  // namespace vx
