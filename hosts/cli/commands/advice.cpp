#include "hosts/cli/commands/advice.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "hosts/cli/pictures/formats.h"
#include "hosts/settings/nearest.h"

namespace vx::cli {
namespace {

std::string onCommand(const CLI::App& program, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands(nullptr))
    names.push_back(command->get_name());
  const std::string near = settings::nearest(word, names);
  if (!near.empty()) return "there is no command '" + word + "'; did you mean " + near + "?";
  std::error_code error;
  if (!std::filesystem::exists(word, error) && !formatByExtension(word))
    return "there is no command '" + word + "'";
  return "say what to do with the picture, as in: vxicore adjust " + word + " -o OUT --auto";
}

std::string onOption(const CLI::App& command, const std::string& argument) {
  const std::string word = argument.substr(0, argument.find('='));
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  const std::string near = settings::nearest(word, names);
  return near.empty() ? "" : "there is no option " + word + "; did you mean " + near + "?";
}

}  // namespace

std::string advice(const CLI::App& program, const std::vector<std::string>& arguments) {
  const auto commands = program.get_subcommands();
  if (commands.empty()) {
    const bool word = !arguments.empty() && !arguments[0].starts_with('-');
    return word ? onCommand(program, arguments[0]) : "";
  }
  for (const std::string& rest : commands.front()->remaining()) {
    if (!rest.starts_with("--")) continue;
    if (const std::string text = onOption(*commands.front(), rest); !text.empty()) return text;
  }
  return "";
}

}  // namespace vx::cli
