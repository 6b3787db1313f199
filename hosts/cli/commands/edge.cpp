#include "hosts/cli/commands/edge.h"

#include "vxicore26.h"

namespace vx::cli {
namespace {

constexpr std::string_view kSharp = "Sharpness of edges (luminance)";
constexpr std::string_view kBlur = "Noise and blotches of colour (blur of chroma)";
constexpr std::string_view kShift = "Colour beside its place (shift of chroma against luminance)";
constexpr std::string_view kAlign = "Colour that bleeds across edges (realignment of chroma)";

// The widest kernel of the library is the one of sigma 2.44.
constexpr float kWidest = 2.5F;

}  // namespace

EdgeCommand::EdgeCommand(CLI::App& program)
    : TreatingCommand(program, "edge", "Sharpen edges and repair colour beside them") {
  // A range floor of 0 would make flat places white: 0 / 0.
  addSettings({
      {"base-gain", &baseGain_, 0, 10, kSharp,
       "Gain of the detail everywhere; below 1 softens. Acts together with a blur. 1 is neutral"},
      {"adaptive-gain", &adaptiveGain_, 0, 20, kSharp,
       "Further gain in the middle of a transition, which falls off towards its ends, so that "
       "edges get steeper without bright and dark seams. Acts together with a blur. Usual: 1 to 4. "
       "0 is off"},
      {"blur-x", &blurX_, 0, kWidest, kSharp,
       "What counts as detail: less than this blur keeps, horizontally, in pixels. Usual: 0.8 to "
       "2. Up to 0.45 is off"},
      {"blur-y", &blurY_, 0, kWidest, kSharp, "The same, vertically"},
      {"range-floor", &rangeFloor_, 0.001F, 1, kSharp,
       "Contrast (1 is white against black) up to which the adaptive gain stays low; above the "
       "noise it keeps noise from being sharpened"},
      {"chroma-blur-x", &chromaBlurX_, 0, kWidest, kBlur,
       "Blur of the colour, horizontally, in pixels. Up to 0.4 is off"},
      {"chroma-blur-y", &chromaBlurY_, 0, kWidest, kBlur, "The same, vertically"},
      {"chroma-shift-x", &chromaShiftX_, -7, 7, kShift,
       "Moves the colour by this many pixels to the right. 0 is off", true},
      {"chroma-shift-y", &chromaShiftY_, -7, 7, kShift, "The same, downward", true},
      {"align-x", &alignX_, 0, 6, kAlign,
       "How far to search, horizontally, for the colour that fits the luminance of a pixel, in "
       "pixels, rounded from 0.6 up. The time grows with the product of both. Below 0.6 is off"},
      {"align-y", &alignY_, 0, 6, kAlign, "The same, vertically"},
      {"align-threshold", &alignThreshold_, 0, 1, kAlign,
       "A pixel whose luminance differs from its surroundings by less than this keeps its colour. "
       "Usual: 0.01 to 0.05"},
  });
  addExamples(
      "  vxicore edge photo.jpg -o sharper.jpg --preset soft-lens\n"
      "  vxicore edge stills/ -o repaired/ --preset chroma-bleed --chroma-shift-x -2\n",
      "All settings start neutral.");
}

void EdgeCommand::treat(const std::filesystem::path&, Picture& picture, Progress&) {
  Raster& raster = picture.raster;
  const bool deep = raster.depth() == 16;
  callLibrary([&] {
    return vxYUVEdgeRGB(deep, raster.pixels(), raster.rowStep(), raster.paddedWidth(),
                        raster.paddedHeight(), baseGain_, rangeFloor_, blurX_, blurY_,
                        adaptiveGain_, chromaBlurX_, chromaBlurY_, static_cast<int>(chromaShiftX_),
                        static_cast<int>(chromaShiftY_), alignX_, alignY_, alignThreshold_, 0);
  });
}

// Three float planes, and copies of them while the realignment reads and writes.
int EdgeCommand::libraryBytes() const {
  const bool aligns = alignX_ > 0.4F || alignY_ > 0.4F;
  return (aligns ? 6 : 3) * static_cast<int>(sizeof(float));
}

}  // namespace vx::cli
