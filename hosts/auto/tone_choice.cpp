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
constexpr double kNight = 0.2;
constexpr Aim kMedian = {0.34, 0.235};  // exponent 0.745; below it is night or dusk
constexpr double kBright = 0.85;        // lights that reach this are exposed well
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

// The gamma whose curve takes `from` to `to` (vxAdjustRgb tells the exponents).
float gammaBetween(double from, double to) {
  const double exponent = std::log(to) / std::log(from);
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
    if (kMedian.misses(before_.median) && before_.bright < kBright) {
      tone_.seen = VX_AUTO_TONE_DARK;
      tone_.lumaGamma = gammaBetween(before_.median, kMedian.value);
    }
    luma_ = tone_.lumaGamma == 0 ? before_.luma : tried(picture_, tone_).luma;
    chooseContrast();
    chooseSaturation();
    restrain();
  }

 private:
  void chooseContrast() {
    if (!kContrast.misses(tried(picture_, tone_).contrast)) return;
    const float exposure = tone_.lumaGamma;
    double low = 0, high = kMostEq;
    for (int turn = 0; turn < 6; ++turn) {
      tone_.lumaEqAmount = static_cast<float>(turn == 0 ? high : (low + high) / 2);
      keepLuma(exposure);
      const double contrast = tried(picture_, tone_).contrast;
      if (turn == 0 && contrast < kContrast.value) break;  // out of reach: as it was meant
      if (turn > 0)
        (contrast < kContrast.value ? low : high) = static_cast<double>(tone_.lumaEqAmount);
    }
    if (tried(picture_, tone_).contrast < 0.98 * kContrast.value) {
      tone_.lumaEqAmount = 0;
      tone_.lumaGamma = exposure;
    }
  }

  // Equalisation moves the mean; gamma takes it back to where the exposure had put it.
  void keepLuma(float exposure) {
    tone_.lumaGamma = exposure;
    for (int turn = 0; turn < 3; ++turn) {
      const double luma = tried(picture_, tone_).luma;
      if (std::abs(luma - luma_) < 0.25 * kLumaStays) return;
      const float step = gammaBetween(luma, luma_);
      tone_.lumaGamma = std::clamp(tone_.lumaGamma + step, exposure - 0.6F, exposure + 0.6F);
    }
  }

  void chooseSaturation() {
    const double chroma = tried(picture_, tone_).chroma;
    if (kChroma.misses(chroma)) tone_.satContrast = static_cast<float>(kChroma.value / chroma);
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
    tone_.lumaGamma =
        tone_.seen == VX_AUTO_TONE_DARK ? gammaBetween(before_.median, kMedian.value) : 0;
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
  double luma_ = 0;  // the mean to be kept
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
