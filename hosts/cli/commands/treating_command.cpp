#include "hosts/cli/commands/treating_command.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "hosts/cli/commands/presets.h"

namespace vx::cli {

TreatingCommand::TreatingCommand(CLI::App& program, const std::string& name,
                                 const std::string& summary)
    : Command(program, name, summary) {
  addInputOptions(app(), files_);
  addOutputOptions(app(), files_);
  const char* group = "Presets";
  std::string shipped;
  for (const std::string& preset : shippedPresets(name))
    shipped += (shipped.empty() ? ", or one of the shipped ones by name: " : ", ") + preset;
  app()
      .add_option("--preset", presets_,
                  helpText("Settings from a file" + shipped +
                           ". May be given again; the command line has the last word"))
      ->option_text("FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  app()
      .add_option("--save-preset", savePreset_,
                  helpText("Write the settings in force to this file (with or without pictures)"))
      ->option_text("FILE")
      ->group(group);
}

void TreatingCommand::addSettings(std::vector<Setting> table) {
  table_ = std::move(table);
  for (const Setting& setting : table_) {
    std::string range = describeRange(setting);
    std::replace(range.begin(), range.end(), ' ', kNoBreak);
    app()
        .add_option("--" + std::string(setting.name), typed_[setting.name],
                    helpText(std::string(setting.help) + ' ' + range))
        ->option_text(valueName(setting))
        ->group(std::string(setting.group));
  }
}

void TreatingCommand::applySettings() {
  for (const std::string& preset : presets_) applyPreset(preset, name(), table_);
  for (const Setting& setting : table_) {
    const std::string option = "--" + std::string(setting.name);
    if (app().count(option) == 0) continue;
    *setting.value = parseSetting(setting, typed_.at(setting.name), option);
  }
}

int TreatingCommand::run() {
  applySettings();
  if (!savePreset_.empty()) {
    try {
      savePreset(savePreset_, name(), table_, files_.force);
    } catch (const FileError& error) {
      std::fprintf(stderr, "vxicore: %s\n", error.what());
      return kExitSomeFailed;
    }
    if (files_.inputs.empty()) return kExitDone;
  }
  return runBatch(files_,
                  {.verb = "enhancing",
                   .settings = describe(table_),
                   .libraryBytes = libraryBytes(),
                   .apply = [this](const std::filesystem::path& input, Picture& picture,
                                   Progress& progress) { treat(input, picture, progress); }});
}

}  // namespace vx::cli
