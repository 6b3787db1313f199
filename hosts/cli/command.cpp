#include "hosts/cli/command.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "hosts/cli/presets.h"

namespace vx::cli {
namespace {

std::string help(const std::string& text) { return wrapped(text, kHelpWidth); }

}  // namespace

Command::Command(CLI::App& program, const std::string& name, const std::string& summary)
    : name_(name), command_(program.add_subcommand(name, summary)) {
  addFileOptions(*command_, files_);
  const char* group = "Presets";
  std::string shipped;
  for (const std::string& preset : shippedPresets(name_))
    shipped += (shipped.empty() ? ": " : ", ") + preset;
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
}

void Command::addSettings(std::vector<Setting> table) {
  table_ = std::move(table);
  for (const Setting& setting : table_) {
    std::string range = describeRange(setting);
    std::replace(range.begin(), range.end(), ' ', kNoBreak);
    command_
        ->add_option("--" + std::string(setting.name), typed_[setting.name],
                     help(std::string(setting.help) + ' ' + range))
        ->option_text(setting.whole ? "N" : "X")
        ->group(std::string(setting.group));
  }
}

void Command::addExamples(const std::string& examples) {
  command_->footer("Examples:\n" + examples + "\nAll settings start neutral.\n" + kExitCodesHelp);
}

void Command::applySettings() {
  for (const std::string& preset : presets_) applyPreset(preset, name_, table_);
  for (const Setting& setting : table_) {
    const std::string option = "--" + std::string(setting.name);
    if (command_->count(option) == 0) continue;
    *setting.value = parseSetting(setting, typed_.at(setting.name), option);
  }
}

int Command::run() {
  applySettings();
  if (!savePreset_.empty()) {
    try {
      savePreset(savePreset_, name_, table_, files_.force);
    } catch (const FileError& error) {
      std::fprintf(stderr, "vxicore: %s\n", error.what());
      return kExitSomeFailed;
    }
    if (files_.inputs.empty()) return kExitDone;
  }
  return runBatch(
      files_, {.verb = "enhancing",
               .settings = describe(table_),
               .libraryBytes = libraryBytes(),
               .apply = [this](Raster& raster, Progress& progress) { treat(raster, progress); }});
}

}  // namespace vx::cli
