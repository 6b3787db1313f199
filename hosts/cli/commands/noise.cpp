#include "hosts/cli/commands/noise.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "hosts/cli/commands/each_picture.h"
#include "hosts/cli/commands/noise_estimate.h"
#include "hosts/cli/commands/plan.h"

namespace vx::cli {
namespace {

// Keys stay in the order they were put in, and a float is written as the shortest text that reads
// back as the same float.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

Json toJson(const std::filesystem::path& input, const NoiseProfile& profile) {
  return {{"file", input.string()},
          {"known", noiseKnown(profile)},
          {"lumaLevel", profile.lumaLevel},
          {"lumaNoise", profile.lumaNoise},
          {"lumaReserved", profile.lumaReserved},
          {"chromaLevel", profile.chromaLevel},
          {"chromaNoise", profile.chromaNoise},
          {"chromaReserved", profile.chromaReserved},
          {"denoiseFast", fittingStrength(profile, NoiseFilter::kFast)},
          {"denoiseNonlocal", fittingStrength(profile, NoiseFilter::kNonLocal)}};
}

void print(const std::filesystem::path& input, const NoiseProfile& profile) {
  std::printf("%s: noise %s", input.c_str(), describeNoise(profile).c_str());
  if (noiseKnown(profile)) {
    std::printf("; --denoise auto: fast %.2f, nonlocal %.2f",
                static_cast<double>(fittingStrength(profile, NoiseFilter::kFast)),
                static_cast<double>(fittingStrength(profile, NoiseFilter::kNonLocal)));
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

NoiseCommand::NoiseCommand(CLI::App& program)
    : Command(program, "noise", "Estimate the noise of pictures") {
  addInputOptions(app(), files_);
  app().add_flag(
      "--json", json_,
      helpText(
          "Print a list with an object per picture: file, the six fields of the "
          "estimate (noise as standard deviation on a scale of 1), whether it is known, and the "
          "strengths that adjust --denoise auto would take. Bytes of a name that are not UTF-8 "
          "become U+FFFD"));
  addExamples(
      "  vxicore noise photo.jpg\n"
      "  vxicore noise holiday/ --json | jq '.[] | select(.lumaNoise > 0.02) | .file'\n",
      "Fine texture counts as noise too. The centre of a picture, up to 2048 x 2048 pixels, is "
      "measured.");
}

int NoiseCommand::run() {
  const std::vector<std::filesystem::path> inputs = expandInputs(files_.inputs);
  Json all = Json::array();
  const int code = forEachPicture(inputs, [&](std::size_t index, Progress& progress) {
    progress.beginStep("reading");
    const NoiseProfile profile = estimateNoise(inputs[index], files_.maxMegapixels, progress);
    progress.clear();
    if (json_) {
      all.push_back(toJson(inputs[index], profile));
    } else {
      print(inputs[index], profile);
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
