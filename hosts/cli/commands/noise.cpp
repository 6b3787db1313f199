#include "hosts/cli/commands/noise.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "hosts/cli/commands/each_picture.h"
#include "hosts/cli/commands/noise_estimate.h"
#include "hosts/cli/commands/plan.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

// Keys stay in the order they were put in, and a float is written as the shortest text that reads
// back as the same float.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

struct Report {
  VxAutoNoise noise;
  VxAutoDenoise nonLocal, fast;  // what adjust --denoise auto takes
  NoiseProfile library;
};

Report reportOn(const std::filesystem::path& input, const FileOptions& options,
                Progress& progress) {
  Picture picture = readForNoise(input, options.maxMegapixels, options.acceptDamage, progress);
  Report report{};
  report.noise = measureNoise(input, picture);
  report.nonLocal = vxAutoChooseDenoise(&report.noise, VX_AUTO_NON_LOCAL, 1);
  report.fast = vxAutoChooseDenoise(&report.noise, VX_AUTO_FAST, 1);
  report.library = libraryEstimate(picture.raster);
  return report;
}

Json toJson(const NoiseProfile& profile) {
  return {{"lumaLevel", profile.lumaLevel},       {"lumaNoise", profile.lumaNoise},
          {"lumaReserved", profile.lumaReserved}, {"chromaLevel", profile.chromaLevel},
          {"chromaNoise", profile.chromaNoise},   {"chromaReserved", profile.chromaReserved}};
}

Json toJson(const VxAutoDenoise& choice) {
  return {{"denoiseMode", choice.mode},
          {"denoiseStrength", choice.strength},
          {"noiseProfile", toJson(choice.profile)}};
}

Json toJson(const std::filesystem::path& input, const Report& report) {
  return {{"file", nameOf(input)},
          {"seen", describeDenoise(&report.noise, nullptr)},
          {"sigma", report.noise.sigma},
          {"correlation", report.noise.correlation},
          {"nonlocal", toJson(report.nonLocal)},
          {"fast", toJson(report.fast)},
          {"library", toJson(report.library)},
          {"libraryKnown", noiseKnown(report.library)}};
}

void print(const std::filesystem::path& input, const Report& report) {
  std::printf("%s: %s\n", nameOf(input).c_str(), describeDenoise(&report.noise, nullptr).c_str());
  std::printf("  --denoise auto   %s (--denoise-mode nonlocal), %s (fast)\n",
              describeDenoise(nullptr, &report.nonLocal).c_str(),
              describeDenoise(nullptr, &report.fast).c_str());
  std::printf("  pixel to pixel   %s\n", describeNoise(report.library).c_str());
  std::fflush(stdout);
}

}  // namespace

NoiseCommand::NoiseCommand(CLI::App& program)
    : Command(program, "noise", "Estimate the noise of pictures") {
  addInputOptions(app(), files_);
  app().add_flag(
      "--json", json_,
      helpText(
          "Print a list with an object per picture: file, what was seen, sigma (standard deviation "
          "of the luma in flat places, in steps of 255), correlation, the arguments that adjust "
          "--denoise auto would hand to the library in either mode (strength 0 is off), and the "
          "library's own estimate. Bytes of a name that are not UTF-8 become U+FFFD"));
  addExamples(
      "  vxicore noise photo.jpg\n"
      "  vxicore noise holiday/ --json | jq '.[] | select(.sigma > 4) | .file'\n",
      "The centre of a picture, up to 4096 x 4096 pixels, is looked at. The library's own estimate "
      "measures deviations from pixel to pixel in up to 2048 x 2048 pixels: fine texture counts "
      "there, and what JPEG has smoothed does not.");
}

int NoiseCommand::run() {
  std::vector<std::filesystem::path> inputs;
  for (const Input& input : expandInputs(files_)) inputs.push_back(input.path);
  Json all = Json::array();
  const int code = forEachPicture(inputs, [&](std::size_t index, Progress& progress) {
    progress.beginStep("reading");
    const Report report = reportOn(inputs[index], files_, progress);
    progress.clear();
    if (json_) {
      all.push_back(toJson(inputs[index], report));
    } else {
      print(inputs[index], report);
    }
  });
  if (json_) {
    // An interrupted run prints what was measured until then.
    const std::string text = all.dump(2, ' ', false, Json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
  }
  return code;
}

}  // namespace vx::cli
