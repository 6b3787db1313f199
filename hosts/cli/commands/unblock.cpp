#include "hosts/cli/commands/unblock.h"

#include "hosts/cli/commands/block_removal.h"

namespace vx::cli {

UnblockCommand::UnblockCommand(CLI::App& program)
    : TreatingCommand(program, "unblock", "Remove the block artifacts of JPEG") {
  addSettings(settings::bind(settings::unblockSettings(), values_));
  addExamples(
      "  vxicore unblock old.jpg -o smooth.png\n"
      "  vxicore unblock archive/ -o smooth/ --trip-quality 40 --shift-step 2\n",
      "Works on 8 bits; what it changes is added to the samples, whatever their depth.");
}

void UnblockCommand::treat(const std::filesystem::path& input, Picture& picture, Progress&) {
  int quality = static_cast<int>(values_.quality);
  if (values_.quality == settings::kAuto) quality = fittingTripQuality(input, picture.notes);
  if (quality == 0) return;
  const int jpegMode = static_cast<int>(values_.chroma) | static_cast<int>(values_.colours);
  removeBlocks(picture, quality, jpegMode, static_cast<int>(values_.shiftStep));
}

int UnblockCommand::libraryBytes() const { return kBlockRemovalBytes; }

}  // namespace vx::cli
