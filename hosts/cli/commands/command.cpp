#include "hosts/cli/commands/command.h"

#include <CLI/CLI.hpp>

namespace vx::cli {

Command::Command(CLI::App& program, const std::string& name, const std::string& summary)
    : name_(name), app_(program.add_subcommand(name, summary)) {}

bool Command::chosen() const { return app_->parsed(); }

void Command::addExamples(const std::string& examples, const std::string& closing) {
  app_->footer("Examples:\n" + examples + "\n" + closing + "\n" + kExitCodesHelp);
}

}  // namespace vx::cli
