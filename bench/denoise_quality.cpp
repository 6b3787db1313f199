// The noise filter against added noise: how close both modes, at a range of strengths, bring a
// noisy photograph to the clean one, beside OpenCV's denoisers, each at the best of its settings.
// Prints tables in Markdown.
//
//     denoise_quality [--shrink N] [PICTURE...]
//
// Without a picture those that scripts/demo has fetched are taken. --shrink reduces them to 1 / N
// first, which takes away most of what a camera and a JPEG encoder left in them.

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <vector>
#include <vips/vips8>

#include "bench/picture_quality.h"
#include "bench/quality_opencv.h"
#include "bench/read_picture.h"
#include "vxicore26.h"

namespace {

constexpr double kSigmas[] = {5.0, 10.0, 25.0};
constexpr float kStrengths[] = {0.25f, 0.4f, 0.6f, 0.8f, 1.0f, 1.25f, 1.5f};
constexpr const char* kModes[] = {"fast", "non-local"};
constexpr const char* kFetched = "build/pictures";
constexpr unsigned kSeed = 20;

RgbPicture withNoise(RgbPicture picture, double sigma) {
  std::mt19937 random(kSeed);
  std::normal_distribution<double> noise(0.0, sigma);
  for (auto& sample : picture.samples)
    sample = static_cast<std::uint8_t>(std::clamp(std::lround(sample + noise(random)), 0L, 255L));
  return picture;
}

NoiseProfile estimate(const RgbPicture& p) {
  NoiseProfile profile{};
  vxDenoiseEstNoise(p.samples.data(), 1, 3 * p.width, p.width, p.height, &profile);
  return profile;
}

RgbPicture filtered(RgbPicture p, const NoiseProfile& profile, int mode, float strength) {
  vxAdjustRgb(p.samples.data(), 1, 3 * p.width, p.width, p.height, 1, nullptr, nullptr, nullptr,
              nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, strength, &profile, 0, 0,
              mode);
  return p;
}

struct Quality {
  double psnr = 0.0;
  double ssim = 0.0;
};

struct Sample {
  RgbPicture clean, noisy;
  NoiseProfile profile;
};

// The mean over the pictures of what `run` makes of them.
template <class Run>
Quality meanOf(const std::vector<Sample>& samples, bool similarity, const Run& run) {
  Quality sum;
  for (const Sample& sample : samples) {
    const RgbPicture result = run(sample);
    sum.psnr += psnr(sample.clean, result);
    if (similarity) sum.ssim += ssim(sample.clean, result);
  }
  const auto count = static_cast<double>(samples.size());
  return {sum.psnr / count, sum.ssim / count};
}

// The best of OpenCV's settings by PSNR; 0 dB without OpenCV.
Quality bestOfPeer(const std::vector<Sample>& samples, OpenCvDenoiser::Kind kind, double sigma,
                   std::string& setting) {
  Quality best;
  OpenCvDenoiser chosen{};
  for (const OpenCvDenoiser& denoiser : openCvSettings(kind, sigma)) {
    const Quality q =
        meanOf(samples, false, [&](const Sample& s) { return denoise(denoiser, s.noisy); });
    if (!(q.psnr > best.psnr)) continue;
    best = q;
    chosen = denoiser;
  }
  if (best.psnr == 0.0) return best;
  setting = chosen.setting();
  return meanOf(samples, true, [&](const Sample& s) { return denoise(chosen, s.noisy); });
}

void printQuality(const std::vector<RgbPicture>& pictures, double sigma) {
  std::vector<Sample> samples;
  for (const RgbPicture& clean : pictures) {
    samples.push_back({clean, withNoise(clean, sigma), {}});
    samples.back().profile = estimate(samples.back().noisy);
  }
  const Quality before = meanOf(samples, true, [](const Sample& s) { return s.noisy; });
  std::printf("\n## Sigma %g\n\n", sigma);
  std::printf("| strength | fast | non-local |\n|---|---|---|\n");
  std::printf("| before | %.2f / %.4f | |\n", before.psnr, before.ssim);
  Quality best[2];
  for (const float strength : kStrengths) {
    std::printf("| %.2f |", static_cast<double>(strength));
    for (int mode = 0; mode < 2; ++mode) {
      const Quality q = meanOf(samples, true, [&](const Sample& s) {
        return filtered(s.noisy, s.profile, mode, strength);
      });
      if (q.psnr > best[mode].psnr) best[mode] = q;
      std::printf(" %.2f / %.4f |", q.psnr, q.ssim);
      std::fflush(stdout);
    }
    std::printf("\n");
  }
  const struct {
    const char* name;
    OpenCvDenoiser::Kind kind;
  } peers[] = {{"bilateralFilter, d 9", OpenCvDenoiser::Kind::kBilateral},
               {"fastNlMeansDenoisingColored 3/11", OpenCvDenoiser::Kind::kNonLocalMeans}};
  std::printf("\n| OpenCV at its best | | best fast less this | best non-local less this |\n");
  std::printf("|---|---|---|---|\n");
  for (const auto& peer : peers) {
    std::string setting;
    const Quality q = bestOfPeer(samples, peer.kind, sigma, setting);
    if (q.psnr == 0.0) continue;
    std::printf("| %s, %s | %.2f / %.4f | %+.2f dB, %+.4f | %+.2f dB, %+.4f |\n", peer.name,
                setting.c_str(), q.psnr, q.ssim, best[0].psnr - q.psnr, best[0].ssim - q.ssim,
                best[1].psnr - q.psnr, best[1].ssim - q.ssim);
  }
}

// Sigma of the luma 0.299 R + 0.587 G + 0.114 B, in levels of 8 bits.
void printEstimates(const std::vector<RgbPicture>& pictures,
                    const std::vector<std::string>& names) {
  constexpr double kLumaOfRgb = 0.66847;  // root of the sum of the squares of the weights
  std::printf("\n## Estimated noise of the luma\n\n| added sigma | true |");
  for (const std::string& name : names) std::printf(" %s |", name.c_str());
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < names.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const double sigma : {0.0, 2.5, 5.0, 10.0, 25.0, 40.0}) {
    std::printf("| %g | %.2f |", sigma, kLumaOfRgb * sigma);
    for (const RgbPicture& clean : pictures) {
      const double seen =
          256.0 *
          static_cast<double>(estimate(sigma > 0.0 ? withNoise(clean, sigma) : clean).lumaNoise);
      std::printf(" %.2f", seen);
      if (sigma > 0.0) std::printf(" (%+.0f %%)", 100.0 * (seen / (kLumaOfRgb * sigma) - 1.0));
      std::printf(" |");
    }
    std::printf("\n");
  }
}

int run(int argc, char** argv) {
  std::vector<std::string> paths, names;
  int shrink = 1;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--shrink" && i + 1 < argc) {
      shrink = std::max(std::atoi(argv[++i]), 1);
    } else {
      paths.push_back(argument);
    }
  }
  if (paths.empty() && std::filesystem::is_directory(kFetched))
    for (const auto& file : std::filesystem::directory_iterator(kFetched))
      paths.push_back(file.path().string());
  if (paths.empty()) {
    std::fprintf(stderr, "give pictures, or run scripts/demo, which fetches one\n");
    return 2;
  }
  std::sort(paths.begin(), paths.end());
  std::vector<RgbPicture> pictures;
  for (const std::string& path : paths) {
    pictures.push_back(readPicture(path, shrink));
    names.push_back(std::filesystem::path(path).stem().string());
    std::printf("%s%s (%d x %d)", names.size() > 1 ? ", " : "Mean over ", names.back().c_str(),
                pictures.back().width, pictures.back().height);
  }
  std::printf(". PSNR in dB / SSIM.\n");
  for (const double sigma : kSigmas) printQuality(pictures, sigma);
  printEstimates(pictures, names);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (VIPS_INIT(argv[0]) != 0) return 1;
  try {
    return run(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
