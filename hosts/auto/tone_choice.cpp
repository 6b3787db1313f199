#include <algorithm>
#include <cmath>
#include <exception>

#include "hosts/auto/auto_tone.h"
#include "hosts/auto/tone_statistics.h"
#include "vxicore26.h"

namespace vx::automatic {
namespace {

constexpr int kMost = 480, kLeastAxis = 64;

// What a picture is brought to, and the range below it that counts as a little off. The lower end
// is where the strongest restrained setting just reaches the aim: a picture below it would be
// changed as much again by a second run.
struct Aim {
  double value, lowest;
  bool misses(double seen) const { return seen >= lowest && seen < 0.97 * value; }
};
constexpr Aim kMedian = {0.34, 0.235};  // exponent 0.745; below it is night or dusk
// Exposed well whatever the median is: lights that reach their end, and a mean that is not low.
constexpr double kBright = 0.85, kLuma = 0.32;
constexpr Aim kContrast = {0.095, 0.07};
constexpr Aim kChroma = {0.195, 0.15};
constexpr double kMostEq = 0.25;
constexpr double kMoreClipped = 0.005;
constexpr double kLumaStays = 2.0 / 255;

ToneStatistics tried(const ReducedPicture& original, const VxAutoTone& tone) {
  ReducedPicture copy = original;
  vxAdjustRgb(copy.samples.data(), 3, copy.width * 6, copy.width, copy.height, copy.scale, nullptr,
              nullptr, nullptr, nullptr, tone.lumaEqAmount, tone.lumaEqRadius, 0, tone.lumaGamma, 0,
              0, 0, 0, 1, 1, 1, 0, 0, tone.satContrast, 1, 0, 0, nullptr, 0, 0, 0);
  return toneStatistics(copy);
}

// The exponent that takes `from` to `to`, and the gamma of vxAdjustRgb with that exponent.
double exponentBetween(double from, double to) { return std::log(to) / std::log(from); }
float gammaOf(double exponent) {
  return static_cast<float>(exponent < 1 ? 4.5 * (1 - exponent) : 1 - exponent);
}

class Choice {
 public:
  /// Two copies of a picture, by means and by samples.
  Choice(const ReducedPicture& picture, const ReducedPicture& pixels, VxAutoTone& tone)
      : picture_(picture), pixels_(pixels), before_(toneStatistics(picture)), tone_(tone) {}

  void run() {
    if (before_.median < kMedian.lowest) {
      tone_.seen = VX_AUTO_TONE_NIGHT;
      return;
    }
    tone_.seen = VX_AUTO_TONE_WELL_EXPOSED;
    if (kMedian.misses(before_.median) && before_.bright < kBright && before_.luma < kLuma) {
      tone_.seen = VX_AUTO_TONE_DARK;
      exposure_ = exponentBetween(before_.median, kMedian.value);
      tone_.lumaGamma = gammaOf(exposure_);
    }
    now_ = tone_.lumaGamma == 0 ? before_ : tried(picture_, tone_);
    luma_ = now_.luma;
    if (kContrast.misses(now_.contrast)) chooseContrast();
    if (kChroma.misses(now_.chroma))
      tone_.satContrast = static_cast<float>(kChroma.value / now_.chroma);
    if (tone_.lumaGamma != 0 || tone_.lumaEqAmount != 0 || tone_.satContrast != 1) restrain();
  }

 private:
  // Looks for the amount between two that are known, by interpolation. Equalisation moves the mean
  // by about as much as its amount says; gamma takes it back to where the exposure had put it.
  void chooseContrast() {
    constexpr int kTries = 7;
    const ToneStatistics exposed = now_;
    struct {
      double amount, contrast;
    } low = {0, exposed.contrast}, high = {};
    double amount = kMostEq, logForAmount = 0;
    for (int turn = 0; turn < kTries; ++turn) {
      tone_.lumaEqAmount = static_cast<float>(amount);
      tone_.lumaGamma = gammaOf(exposure_ * std::exp(std::clamp(logForAmount * amount, -0.3, 0.3)));
      now_ = tried(picture_, tone_);
      const bool reached = std::abs(now_.contrast / kContrast.value - 1) < 0.01;
      const bool stays = std::abs(now_.luma - luma_) < 0.25 * kLumaStays;
      if (reached && stays) return;
      if (!stays) logForAmount += std::log(exponentBetween(now_.luma, luma_)) / amount;
      if (reached) continue;
      (now_.contrast < kContrast.value ? low : high) = {amount, now_.contrast};
      if (high.amount == 0) break;
      amount = low.amount + (high.amount - low.amount) * (kContrast.value - low.contrast) /
                                (high.contrast - low.contrast);
    }
    if (now_.contrast >= 0.98 * kContrast.value) return;
    tone_.lumaEqAmount = 0;  // out of reach: as it was meant
    tone_.lumaGamma = gammaOf(exposure_);
    now_ = exposed;
  }

  // Gives way until nothing is clipped and the brightness stays; exposure comes last.
  void restrain() {
    const double clipped = toneStatistics(pixels_).clipped;
    const auto holds = [this, clipped] {
      return tried(pixels_, tone_).clipped <= clipped + kMoreClipped &&
             std::abs(tried(picture_, tone_).luma - luma_) <= kLumaStays;
    };
    if (holds()) return;
    const VxAutoTone wanted = tone_;
    tone_.satContrast = 1;
    if (holds()) return;
    tone_.lumaEqAmount = 0;
    tone_.satContrast = wanted.satContrast;
    tone_.lumaGamma = gammaOf(exposure_);
    if (holds()) return;
    tone_.satContrast = 1;
    if (holds()) return;
    tone_.lumaGamma = 0;
    tone_.seen = VX_AUTO_TONE_WELL_EXPOSED;
  }

  const ReducedPicture& picture_;
  const ReducedPicture& pixels_;
  const ToneStatistics before_;
  VxAutoTone& tone_;
  ToneStatistics now_;   // with the tone as chosen so far
  double exposure_ = 1;  // the exponent for it
  double luma_ = 0;      // the mean to be kept
};

}  // namespace
}  // namespace vx::automatic

int vxAutoChooseTone(const VxAutoPicture* picture, const VxAutoNoise* noise, VxAutoTone* tone) try {
  using namespace vx::automatic;
  if (tone == nullptr) return 1;
  *tone = {VX_AUTO_TONE_NOTHING_SEEN, 0, 0, 100, 1};
  if (picture == nullptr || std::min(picture->width, picture->height) < kLeastAxis) return 1;
  const ReducedPicture small = reduced(*picture, kMost, Reduction::kMean);
  if (small.samples.empty()) return 1;
  tone->lumaEqRadius = static_cast<float>(std::max(picture->width, picture->height) / 12);
  if (noise != nullptr && noise->seen == VX_AUTO_DRAWING) {
    tone->seen = VX_AUTO_TONE_DRAWING;
    return 1;
  }
  Choice(small, reduced(*picture, kMost, Reduction::kSample), *tone).run();
  return 1;
} catch (...) {
  // No memory here or in the library, which has its own kind of exception.
  *tone = {VX_AUTO_TONE_NOTHING_SEEN, 0, 0, 100, 1};
  return 0;
}
