#include "hosts/cli/adjust.h"

#include <algorithm>
#include <cstdio>

#include "hosts/cli/cancel.h"
#include "hosts/cli/error.h"
#include "hosts/cli/presets.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

int onProgress(int position, int total, void* context) {
  static_cast<Progress*>(context)->update(100 * position / total);
  return cancelRequested() ? 0 : 1;
}

void adjust(Raster& raster, const AdjustSettings& s, int previewScale, Progress& progress) {
  constexpr int kRgb8 = 1, kRgb16 = 3;
  int result = 0;
  try {
    result = vxAdjustRgb(raster.pixels(), raster.depth() == 8 ? kRgb8 : kRgb16, raster.rowBytes(),
                         raster.paddedWidth(), raster.paddedHeight(), previewScale, nullptr,
                         nullptr, onProgress, &progress, s.lumaEqAmount, s.lumaEqRadius,
                         s.lumaEqPeakGain, s.lumaGamma, s.lumaEqTopCut, s.lumaEqFloor,
                         s.lumaDetailRange, s.lumaDetailRadius, s.lumaDetailGamma, s.lumaDetailGain,
                         s.sharpenAmount, s.satEqAmount, s.satEqRadius, s.satContrast, s.satGamma,
                         s.hueShift, 0, nullptr, 0, 0, 0);
  } catch (...) {
    // The library lets nothing out but a failed allocation.
    throw FileError("not enough memory to enhance a picture of this size");
  }
  if (result == 0) throw Cancelled();
  if (result == -1) throw FileError("not enough memory to enhance a picture of this size");
  if (result != 1) throw FileError("the library refused it, code " + std::to_string(result));
}

}  // namespace

AdjustCommand::AdjustCommand(CLI::App& program)
    : command_(program.add_subcommand("adjust", "Enhance tone, detail, sharpness and colour")) {
  addFileOptions(*command_, files_);
  const auto help = [](const std::string& text) { return wrapped(text, kHelpWidth); };
  const char* group = "Presets";
  std::string shipped;
  for (const std::string& name : shippedPresets())
    shipped += (shipped.empty() ? ": " : ", ") + name;
  command_
      ->add_option("--preset", presets_,
                   help("Settings from a file, or one of the shipped ones by name" + shipped +
                        ". May be given again; the command line has the last word"))
      ->option_text("FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  command_
      ->add_option("--save-preset", savePreset_,
                   help("Write the settings in force to this file (with or without pictures)"))
      ->option_text("FILE")
      ->group(group);
  for (const Setting& setting : adjustSettings()) {
    std::string range = "[" + formatNumber(setting.low) + " to " + formatNumber(setting.high) +
                        ", default " + formatNumber(setting.neutral()) + "]";
    std::replace(range.begin(), range.end(), ' ', kNoBreak);
    command_
        ->add_option("--" + std::string(setting.name), values_[setting.name],
                     help(std::string(setting.help) + ' ' + range))
        ->option_text("X")
        ->group(std::string(setting.group));
  }
  command_->footer(
      "Examples:\n"
      "  vxicore adjust photo.jpg -o better.jpg --preset vivid\n"
      "  vxicore adjust holiday/ -o better/ --preset clean-jpeg --sharpen-amount 1.4\n"
      "  vxicore adjust scan.tif -o small.png --preview-scale 4 --luma-gamma 0.5\n\n"
      "All settings start neutral: without any the picture stays as it is.\n"
      "Exit codes: 0 done, 1 some picture failed, 2 wrong usage, 130 cancelled.");
}

AdjustSettings AdjustCommand::settings() const {
  AdjustSettings result;
  for (const std::string& preset : presets_) applyPreset(preset, result);
  for (const Setting& setting : adjustSettings()) {
    const std::string option = "--" + std::string(setting.name);
    if (command_->count(option) == 0) continue;
    result.*setting.value = parseSetting(setting, values_.at(setting.name), option);
  }
  return result;
}

int AdjustCommand::run() {
  const AdjustSettings chosen = settings();
  if (!savePreset_.empty()) {
    try {
      savePreset(savePreset_, chosen, files_.force);
    } catch (const FileError& error) {
      std::fprintf(stderr, "vxicore: %s\n", error.what());
      return kExitSomeFailed;
    }
    if (files_.inputs.empty()) return kExitDone;
  }
  return runBatch(files_,
                  {.verb = "enhancing",
                   .settings = describe(chosen),
                   .apply = [&chosen](Raster& raster, int previewScale, Progress& progress) {
                     adjust(raster, chosen, previewScale, progress);
                   }});
}

}  // namespace vx::cli
