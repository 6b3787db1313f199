#pragma once

// What does not follow from the types and names of a primitive's arguments: masks and kernels with
// the neighbourhoods that they read, regions, levels, states, and when a call must succeed.

#include <climits>
#include <map>
#include <memory>

#include "jpeg/tables.h"
#include "prim/deconvolution.h"
#include "prim/grid.h"
#include "prim/jpeg.h"
#include "prim/pyramid.h"
#include "tests/prim/variants/match.h"

namespace vx::test {

/// Arguments of a trial by their names.
struct Plan {
  int expected;     ///< 0, or the status of the refusal that the arguments ask for
  int setting = 0;  ///< every integer that is neither size nor step nor listed below
  Frame frame{};    ///< readable pixels around the sources
  int reach = 0;    ///< how many of those beside a row its step must hold
  std::map<std::string_view, double> numbers{};
  /// Of images and lists that are not the trial's size.
  std::map<std::string_view, Shape> shapes{};
  std::map<std::string_view, std::function<double(int)>> elements{};  ///< values of a list
  std::map<std::string_view, std::shared_ptr<void>> objects{};        ///< no images
  bool ontoSource = false;  ///< the destination is the first image

  /// Sizes are checked first, then steps, then the rest in the order of these calls.
  void refuse(bool bad, prim::Status status) {
    if (bad && (expected == prim::kStatusOk || status == prim::kStatusBadSize)) expected = status;
  }
  template <class... Values>
  void set(std::string_view names, Values... values) {
    for (const double value : {static_cast<double>(values)...}) {
      numbers[names.substr(0, names.find(' '))] = value;
      names.remove_prefix(std::min(names.size(), names.find(' ') + 1));
    }
  }
  void list(std::string_view name, int length) { shapes[name] = listOf(std::max(1, length)); }
};

/// Source pixels that the taps of a kernel meet around a pixel: dst(x) takes src(x + anchor - j).
inline Frame reachOf(int columns, int anchorX, int rows, int anchorY) {
  return {std::max(0, columns - 1 - anchorX), std::max(0, rows - 1 - anchorY), std::max(0, anchorX),
          std::max(0, anchorY)};
}

inline void planMask(const Prim& entry, Trial& t, Plan& plan) {
  const int small = entry.has("Vert") ? 13 : entry.has("Horiz") ? 31 : 33;
  const int large = entry.has("Vert") ? 15 : entry.has("Horiz") ? 51 : 55;
  const int mask = t.oneIn(10) ? t.pick({0, 3, 5, 11, 13, 15, 31, 33, 35, 51, 55, -33, 77})
                               : t.pick({small, large});
  // An unsupported mask of one primitive is the mask of another and must not be taken for it.
  const bool known = mask == small || mask == large;
  plan.refuse(!known, prim::kStatusBadMask);
  plan.setting = mask;
  const int x = mask / 10 / 2, y = mask % 10 / 2;
  if (known) plan.frame = {x, y, x, y};
}

/// A row, a column or a rectangle of weights, those of bytes with a divisor: small weights, or such
/// as leave a 16-bit path; 49 products of 8 bits stay inside 32 bits.
inline void planConvolution(const Prim& entry, Trial& t, Plan& plan) {
  const bool across = !entry.has("Column"), down = !entry.has("Row");
  const int columns = across ? t.pick({0, 1, 2, 3, 4, 5, 7, 8, 11}) : 1;
  const int rows = across && down ? t.pick({0, 1, 2, 3, 4, 5, 7})
                   : down         ? t.pick({0, 1, 2, 3, 4, 5, 7, 8, 11})
                                  : 1;
  const auto anchorIn = [&](int taps) {
    return t.oneIn(6) && !(across && down) ? t.pick({-1, taps})
                                           : t.uniform(0, std::max(0, taps - 1));
  };
  const int anchorX = across ? anchorIn(columns) : 0, anchorY = down ? anchorIn(rows) : 0;
  const int divisor = t.oneIn(3) ? t.pick({0, 1, -1, -3, -4, INT_MAX, INT_MIN, 1 << 20, 1 << 30})
                                 : t.pick({1, 2, 3, 4, 5, 7, 9, 10, 16, 25, 49, 256, 1000});
  plan.list("kernel", columns * rows);
  if (entry.takes("divisor"))
    plan.elements["kernel"] = [&t, large = t.oneIn(5)](int) {
      return large ? t.uniform(-150000, 150000) : t.uniform(-8, 16);
    };
  plan.frame = reachOf(columns, anchorX, rows, anchorY);
  plan.set("kernelWidth kernelHeight kernelLen anchor anchorX anchorY divisor", columns, rows,
           columns * rows, across ? anchorX : anchorY, anchorX, anchorY, divisor);
  plan.reach = columns - 1;
  plan.refuse(columns * rows < 1, prim::kStatusBadSize);
  plan.refuse(divisor == 0 && entry.takes("divisor"), prim::kStatusZeroDivisor);
}

/// A median of any odd size; the last two are even or negative and refused.
inline void planMedian(Trial& t, Plan& plan) {
  const int maskWidth = t.pick({1, 3, 5, 1, 3, 5, 7, 9, 4, -3});
  const int maskHeight = t.pick({1, 3, 5, 1, 3, 5, 7, 9, 3, 0});
  const bool centred = t.oneIn(2);
  const int x = std::max(0, maskWidth), y = std::max(0, maskHeight);
  const int anchorX = centred ? maskWidth / 2 : t.uniform(-1, x);
  const int anchorY = centred ? maskHeight / 2 : t.uniform(-1, y);
  // The window begins at the anchor's distance before the pixel.
  plan.frame = reachOf(x, x - 1 - anchorX, y, y - 1 - anchorY);
  plan.set("maskWidth maskHeight anchorX anchorY", maskWidth, maskHeight, anchorX, anchorY);
  plan.refuse(x % 2 == 0 || y % 2 == 0, prim::kStatusBadMask);
  plan.refuse(anchorX < 0 || anchorX >= x || anchorY < 0 || anchorY >= y, prim::kStatusBadAnchor);
}

/// Into a larger destination; one time in 4 the source does not fit or lies outside.
inline void planBorder(const Prim& entry, Trial& t, Plan& plan) {
  const int left = t.uniform(0, 20), top = t.uniform(0, 4);
  const int dstWidth = left + t.width + t.uniform(0, 20);
  const int dstHeight = top + t.height + t.uniform(0, 4);
  const bool outside = t.oneIn(8), below = !outside && t.oneIn(8);
  plan.shapes = {{"dst", {dstWidth, dstHeight, entry.destination}}};
  plan.set("srcWidth srcHeight dstWidth dstHeight top left", t.width, t.height, dstWidth, dstHeight,
           below ? t.pick({-1, dstHeight - t.height + 1, INT_MAX}) : top,
           outside ? t.pick({-1, dstWidth - t.width + 1, INT_MAX}) : left);
  plan.refuse(outside || below, prim::kStatusBadSize);
}

/// A region that may touch the source's edges or lie inside or, one time in 12, beside it.
inline void planResize(Trial& t, Plan& plan) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const int x = t.oneIn(2) ? 0 : t.uniform(0, 9), y = t.oneIn(2) ? 0 : t.uniform(0, 9);
  const int srcWidth = x + t.width + (t.oneIn(2) ? 0 : t.uniform(0, 9));
  const int srcHeight = y + t.height + (t.oneIn(2) ? 0 : t.uniform(0, 9));
  const double xFactor = t.pick({0.5, 1.0, 2.0, 0.3, 1.7, 3.0, 0.5, 1.0, 2.0});
  const double yFactor = t.oneIn(3) ? t.pick({0.5, 1.0, 2.0, 0.4, 1.3}) : xFactor;
  const int dstWidth = std::max(1, int(t.width * xFactor));
  const int dstHeight = std::max(1, int(t.height * yFactor));
  const bool beside = t.oneIn(12), badX = t.oneIn(12), badY = t.oneIn(12);
  plan.setting = t.oneIn(2) ? 4 : t.pick({1, 2, 4, 8, 16, 0, 3, 32, -1});
  plan.shapes = {{"src", {srcWidth, srcHeight}}, {"dst", {dstWidth, dstHeight}}};
  plan.set("srcWidth srcHeight roiX roiY roiWidth roiHeight dstWidth dstHeight xFactor yFactor",
           srcWidth, srcHeight, beside ? t.pick({-t.width, srcWidth}) : x, y, t.width, t.height,
           dstWidth, dstHeight, badX ? t.pick({0.0, -1.0, kInfinity, kNone}) : xFactor,
           badY ? t.pick({0.0, -1.0, kInfinity, kNone}) : yFactor);
  plan.refuse(beside, prim::kStatusBadSize);
  plan.refuse(badX || badY, prim::kStatusBadFactor);
  const bool known = plan.setting == 1 || plan.setting == 2 || plan.setting == 4 ||
                     plan.setting == 16 || (plan.setting == 8 && xFactor <= 1 && yFactor <= 1);
  plan.refuse(!known, prim::kStatusBadInterpolation);
}

/// One state for all columns, since its scratch must not matter.
inline void planDeconvolution(Trial& t, Plan& plan) {
  t.stayFinite();
  const int size = std::min(t.uniform(1, 7), t.height + 2), most = size - 1 + t.uniform(0, 3);
  std::vector<float> kernel(static_cast<std::size_t>(size * size));
  for (float& k : kernel) k = 0.0625f * static_cast<float>(t.uniform(0, 4));
  prim::primDeconvLRState* state = nullptr;
  EXPECT_EQ(prim::primDeconvLRInitAlloc_32f_C1R(&state, kernel.data(), size, t.width + most,
                                                t.height + most, t.pick({0.0f, 1e-4f, 0.3f})),
            prim::kStatusOk);
  plan.objects["state"] =
      std::shared_ptr<void>(state, [state](void*) { prim::primDeconvLRFree_32f_C1R(state); });
  plan.setting = t.pick({0, 1, 1, 2, 3});
  plan.refuse(plan.setting < 1, prim::kStatusBadParameter);
}

/// Levels that rise, but for one time in 6: of a curve over the range of the trial's values, where
/// a few repeat, so that segments are empty; of a histogram.
inline void planLevels(const Prim& entry, Trial& t, Plan& plan) {
  const bool curve = entry.takes("values");
  const int count =
      curve ? t.pick({0, 1, 2, 3, 4, 5, 9, 17, 64}) : t.pick({0, 1, 2, 3, 4, 9, 65, 257, 1025});
  plan.list("values", count);
  plan.list("levels", count);
  plan.list("hist", count - 1);
  plan.setting = count;
  plan.refuse(count < 2, curve ? prim::kStatusFewLutLevels : prim::kStatusFewHistogramLevels);
  const bool rising = !t.oneIn(6), repeats = t.oneIn(4), few = t.fill == Fill::few;
  const bool unit = few || t.fill == Fill::unit;
  if (curve && rising)
    plan.elements["levels"] = [=, &t, level = unit ? 0.0 : -64.0](int) mutable {
      const double rise = (unit ? 1.0 : 400.0) / count * 0.25 * t.uniform(1, 6);
      return std::exchange(level, level + (repeats && t.oneIn(3) ? 0.0 : rise));
    };
  if (!curve)
    plan.elements["levels"] = [=, &t, level = t.pick({-40000, -32768, -3, 0, 100})](int) mutable {
      return std::exchange(level, rising
                                      ? level + t.uniform(1, few ? 2 : 80000 / std::max(1, count))
                                      : t.uniform(-40000, 40000));
    };
}

/// Candidates to the right of each pixel.
inline void planSearch(Trial& t, Plan& plan) {
  plan.setting = t.pick({0, 1, 2, 5, 13});
  plan.reach = std::max(0, plan.setting - 1);
  plan.refuse(plan.setting < 1, prim::kStatusBadSize);
}

/// An axis that meets the trial's values, or one that they miss on both sides; the read goes into a
/// destination of its own or into the guide.
inline void planGrid(const Prim& entry, Trial& t, Plan& plan) {
  const float low = t.pick({0.0f, -8.0f, 10.0f});
  plan.objects["axis"] = std::make_shared<prim::GridAxis>(
      prim::GridAxis{t.oneIn(2), low, low + t.pick({1.0f, 100.0f, 255.0f}), t.pick({low, 0.0f}),
                     t.pick({0.125f, 1.0f, 8.3f, 200.0f}), t.pick({0.0f, 0.5f, 2.0f}),
                     t.pick<std::uint8_t>({0, 1, 11, 255})});
  const int depth = t.uniform(1, 30), columns = t.uniform(1, 9), cells = t.width;
  const bool packs = entry.has("Pack");
  plan.setting = depth;
  plan.set("cells rowFraction", cells, t.pick({0.0f, 0.25f, 0.7f}));
  plan.list("near", cells + depth);
  plan.list("far", cells + depth);
  plan.list("packed", 4 * (packs ? cells : depth * (columns - 1) + 257));
  plan.elements["column"] = [=](int x) { return depth * (x * columns / cells); };
  plan.elements["fraction"] = [](int x) { return x % 16 * 0.0625; };
  plan.ontoSource = entry.has("Read") && t.oneIn(2);
}

/// Blocks and rows of baseline JPEG with the values that pictures give: samples within -128..128,
/// of which the vertical transform makes 44 * 128 * sqrt(8) at most.
inline void planJpeg(const Prim& entry, Trial& t, Plan& plan) {
  constexpr int kColumnTop = 15930;
  const int blocks = entry.has("Levels") && t.oneIn(20) ? 700 : t.uniform(1, 13);
  const auto within = [&t](int top) {
    return [&t, top, ends = t.oneIn(3)](int) -> double {
      return ends ? t.pick({-top, top}) : t.uniform(-top, top);
    };
  };
  plan.set("blocks", blocks);
  plan.list("rgb", 3 * t.width);
  plan.list("columns", 64 * blocks);
  plan.list("coefficients", 64 * blocks);
  plan.elements["rows"] = within(128);
  plan.elements["columns"] = within(entry.has("Requantise") ? kColumnTop / 4 : kColumnTop);
  plan.elements["coefficients"] = within(t.pick({40, 400, 2047}));
  plan.list("dst", entry.takes("blocks") ? 64 * blocks
                   : entry.takes("rows") ? 8 * t.width
                                         : 2 * t.width);
  if (entry.takes("dstStep")) plan.shapes["dst"] = {8 * blocks, 8};
  if (entry.has("Upsample"))
    for (const char* name : {"src", "near", "far"})
      plan.shapes[name] = {t.width, 1, {}, {1, 0, 1, 0}, 0, false};
  JpegQuantTable table = jpegQuantTable(t.oneIn(2), t.pick({1, 20, 50, 75, 95, 100}));
  if (t.oneIn(2))
    for (auto& step : table) step = static_cast<std::uint8_t>(t.uniform(1, 255));
  plan.objects["quantiser"] = std::make_shared<prim::JpegQuantiser>(jpegQuantiser(table));
}

inline Plan planOf(const Prim& entry, Trial& t) {
  Plan plan{t.bottomUp && entry.checksSteps ? prim::kStatusBadStep : prim::kStatusOk};
  if (entry.has("3x3")) plan.frame = {1, 1, 1, 1}, plan.reach = 2;
  if (entry.takes("roundMode")) plan.setting = t.pick({0, 1, 1, 2, 7, -1});
  if (entry.takes("selector")) plan.setting = t.pick({0, 1, 2, 3, 4, 5, -1});
  if (entry.takes("scaleFactor"))
    plan.setting = t.oneIn(8)   ? t.pick({INT_MIN, -33, -32, -31, 31, 32, 33, INT_MAX})
                   : t.oneIn(3) ? t.pick({0, 1})
                                : t.uniform(-18, 18);
  if (entry.takes("mask)")) planMask(entry, t, plan);
  if (entry.takes("kernel")) planConvolution(entry, t, plan);
  if (entry.takes("maskWidth")) planMedian(t, plan);
  if (entry.has("Border")) planBorder(entry, t, plan);
  if (entry.has("Resize")) planResize(t, plan);
  if (entry.has("Deconv")) planDeconvolution(t, plan);
  if (entry.takes("levels")) planLevels(entry, t, plan);
  if (entry.has("Search")) planSearch(t, plan);
  if (entry.has("Grid")) planGrid(entry, t, plan);
  if (entry.has("Jpeg")) planJpeg(entry, t, plan);
  if (entry.has("Pyr")) {
    const bool down = entry.has("Down");
    int bytes = 0;
    (down ? prim::primPyrDownGetBufSize : prim::primPyrUpGetBufSize)(t.width, 13, 1, &bytes);
    plan.list("buffer", bytes);
    plan.shapes["dst"] = {down ? (t.width + 1) / 2 : 2 * t.width,
                          down ? (t.height + 1) / 2 : 2 * t.height};
  }
  // Windows refuse sizes below 3, the transposition all but squares.
  const int shortest = entry.takes("length") ? t.width : std::min(t.width, t.height);
  plan.refuse(entry.has("Win") && shortest < 3, prim::kStatusBadSize);
  if (entry.has("Transpose") && !t.oneIn(20)) t.height = t.width = t.width % 300;
  plan.refuse(entry.has("Transpose") && t.width != t.height, prim::kStatusBadSize);
  return plan;
}

}  // namespace vx::test
