#include "hosts/cli/commands/treating_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "hosts/cli/commands/presets.h"
#include "hosts/cli/pictures/output_file.h"

namespace vx::cli {
namespace {

void write(const std::filesystem::path& path, const std::string& text, bool force) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  try {
    writeFile(path, {bytes, text.size()}, force);
  } catch (const FileError& error) {
    throw FileError(path.string() + ": " + error.what());
  }
}

}  // namespace

TreatingCommand::TreatingCommand(CLI::App& program, const std::string& name,
                                 const std::string& summary)
    : Command(program, name, summary), presetFolders_(presetFolders()) {
  addInputOptions(app(), files_);
  addOutputOptions(app(), files_);
  const char* group = "Presets";
  std::string known;
  for (const settings::PresetFile& preset : settings::presetsFor(presetFolders_, name))
    known += (known.empty() ? ", or one of these by name: " : ", ") + preset.name;
  app()
      .add_option("--preset", presets_,
                  helpText("Settings from a file" + known +
                           ". May be given again; the command line has the last word"))
      ->option_text("FILE")
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  app()
      .add_option("--save-preset", savePreset_,
                  helpText("Write the settings that are not neutral to this file (with or without "
                           "pictures)"))
      ->option_text("FILE")
      ->group(group);
}

void TreatingCommand::addSettings(std::vector<settings::BoundSetting> table) {
  table_ = std::move(table);
  for (const auto& [setting, value] : table_) {
    const std::string name = "--" + std::string(setting->name), group(setting->group);
    if (settings::isSwitch(*setting)) {
      const std::string help = helpText(setting->help);
      app().add_flag(name, help)->group(group);
      continue;
    }
    std::string range = settings::describeRange(*setting);
    std::replace(range.begin(), range.end(), ' ', kNoBreak);
    app()
        .add_option(name, typed_[setting->name], helpText(std::string(setting->help) + ' ' + range))
        ->option_text(settings::valueName(*setting))
        ->group(group);
  }
}

void TreatingCommand::applySettings() try {
  for (const std::string& preset : presets_)
    settings::applyPreset(presetFolders_, preset, name(), table_);
  for (const auto& [setting, value] : table_) {
    const std::string option = "--" + std::string(setting->name);
    if (app().count(option) == 0) continue;
    *value = settings::isSwitch(*setting)
                 ? 1
                 : settings::parse(*setting, typed_.at(setting->name), option);
  }
} catch (const settings::SettingError& error) {
  throw UsageError(error.what());
}

bool TreatingCommand::keepsChoice() const {
  std::error_code error;
  return choosesSettings() && !savePreset_.empty() && files_.inputs.size() == 1 &&
         !std::filesystem::is_directory(files_.inputs[0], error);
}

bool TreatingCommand::neutral() const {
  if (treatsWhenNeutral()) return false;
  return std::all_of(table_.begin(), table_.end(), [this](const settings::BoundSetting& row) {
    return *row.value == row.setting->neutral &&
           app().count("--" + std::string(row.setting->name)) == 0;
  });
}

bool TreatingCommand::save() const try {
  if (!savePreset_.empty()) write(savePreset_, settings::presetText(name(), table_), files_.force);
  return true;
} catch (const FileError& error) {
  std::fprintf(stderr, "vxicore: %s\n", error.what());
  return false;
}

int TreatingCommand::run() {
  applySettings();
  const bool late = keepsChoice();  // treat() has yet to choose
  if (!late && !save()) return kExitSomeFailed;
  if (!savePreset_.empty() && files_.inputs.empty()) return kExitDone;
  const Treatment treatment{
      .command = name(),
      .verb = "enhancing",
      .settings = settings::texts(table_),
      .libraryBytes = libraryBytes(),
      .apply = [this](const std::filesystem::path& input, Picture& picture, Progress& progress) {
        treat(input, picture, progress);
      }};
  const int code = runBatch(files_, treatment, neutral());
  if (code == kExitDone && late && !save()) return kExitSomeFailed;
  return code;
}

}  // namespace vx::cli
