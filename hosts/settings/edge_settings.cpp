#include "hosts/settings/edge_settings.h"

namespace vx::settings {
namespace {

constexpr std::string_view kSharp = "Sharpness of edges (luminance)";
constexpr std::string_view kBlur = "Noise and blotches of colour (blur of chroma)";
constexpr std::string_view kShift = "Colour beside its place (shift of chroma against luminance)";
constexpr std::string_view kAlign = "Colour that bleeds across edges (realignment of chroma)";

// The widest kernel of the library is the one of sigma 2.44.
constexpr float kWidest = 2.5F;

// A range floor of 0 would make flat places white: 0 / 0.
constexpr auto kFields = withNeutral(std::to_array<Field<EdgeValues>>({
    {{"base-gain", 0, 10, kSharp,
      "Gain of the detail everywhere; below 1 softens. Acts together with a blur. 1 is neutral"},
     &EdgeValues::baseGain},
    {{"adaptive-gain", 0, 20, kSharp,
      "Further gain in the middle of a transition, which falls off towards its ends, so that "
      "edges get steeper without bright and dark seams. Acts together with a blur. Usual: 1 to 4. "
      "0 is off"},
     &EdgeValues::adaptiveGain},
    {{"blur-x", 0, kWidest, kSharp,
      "What counts as detail: less than this blur keeps, horizontally, in pixels. Usual: 0.8 to "
      "2. Up to 0.45 is off"},
     &EdgeValues::blurX},
    {{"blur-y", 0, kWidest, kSharp, "The same, vertically"}, &EdgeValues::blurY},
    {{"range-floor", 0.001F, 1, kSharp,
      "Contrast (1 is white against black) up to which the adaptive gain stays low; above the "
      "noise it keeps noise from being sharpened"},
     &EdgeValues::rangeFloor},
    {{"chroma-blur-x", 0, kWidest, kBlur,
      "Blur of the colour, horizontally, in pixels. Up to 0.4 is off"},
     &EdgeValues::chromaBlurX},
    {{"chroma-blur-y", 0, kWidest, kBlur, "The same, vertically"}, &EdgeValues::chromaBlurY},
    {{"chroma-shift-x", -7, 7, kShift,
      "Moves the colour by this many pixels to the right. 0 is off", true},
     &EdgeValues::chromaShiftX},
    {{"chroma-shift-y", -7, 7, kShift, "The same, downward", true}, &EdgeValues::chromaShiftY},
    {{"align-x", 0, 6, kAlign,
      "How far to search, horizontally, for the colour that fits the luminance of a pixel, in "
      "pixels, rounded from 0.6 up. The time grows with the product of both. Below 0.6 is off"},
     &EdgeValues::alignX},
    {{"align-y", 0, 6, kAlign, "The same, vertically"}, &EdgeValues::alignY},
    {{"align-threshold", 0, 1, kAlign,
      "A pixel whose luminance differs from its surroundings by less than this keeps its colour. "
      "Usual: 0.01 to 0.05"},
     &EdgeValues::alignThreshold},
}));

}  // namespace

std::span<const Field<EdgeValues>> edgeSettings() { return kFields; }

}  // namespace vx::settings
