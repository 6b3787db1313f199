#include "hosts/cli/commands/presets.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace vx::cli {

settings::PresetFolders presetFolders() {
  std::error_code error;
  return settings::presetFolders(std::filesystem::read_symlink("/proc/self/exe", error));
}

PresetsCommand::PresetsCommand(CLI::App& program)
    : Command(program, "presets", "List the presets") {
  app().footer(
      "Own presets are files NAME.toml in ~/.config/vxicore26/presets/COMMAND/ (or in the same "
      "place below XDG_CONFIG_HOME); --save-preset writes one.");
}

int PresetsCommand::run() {
  const settings::PresetFolders folders = presetFolders();
  for (const char* command : {"adjust", "edge", "unblock"}) {
    const auto presets = settings::presetsFor(folders, command);
    if (presets.empty()) continue;
    std::printf("%s:\n", command);
    for (const settings::PresetFile& preset : presets) {
      const std::string& text = preset.title.empty() ? preset.path.string() : preset.title;
      std::printf("  %-16s %s\n", preset.name.c_str(), text.c_str());
    }
  }
  return kExitDone;
}

}  // namespace vx::cli
