#pragma once

#include <string>
#include <vector>

#include "bench/picture_quality.h"

/// A denoiser of OpenCV at one of its settings. Without OpenCV's photo module there are none.
struct OpenCvDenoiser {
  enum class Kind { kNonLocalMeans, kBilateral } kind;
  double strength;      ///< non-local means: h, for luma and chroma; bilateral: colour sigma
  double spatialSigma;  ///< bilateral alone

#ifdef VX_BENCH_OPENCV
  std::string setting() const;
#else
  std::string setting() const { return {}; }
#endif
};

#ifdef VX_BENCH_OPENCV
/// The settings of a kind that are tried for noise of a sigma.
std::vector<OpenCvDenoiser> openCvSettings(OpenCvDenoiser::Kind kind, double sigma);
RgbPicture denoise(const OpenCvDenoiser& denoiser, const RgbPicture& noisy);
#else
inline std::vector<OpenCvDenoiser> openCvSettings(OpenCvDenoiser::Kind, double) { return {}; }
inline RgbPicture denoise(const OpenCvDenoiser&, const RgbPicture& noisy) { return noisy; }
#endif
