// vxicore: makes photographs better, from the command line.
#include <vips/vips.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "hosts/cli/commands/adjust.h"
#include "hosts/cli/commands/advice.h"
#include "hosts/cli/commands/edge.h"
#include "hosts/cli/commands/noise.h"
#include "hosts/cli/commands/presets.h"
#include "hosts/cli/commands/unblock.h"
#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/metadata.h"

namespace vx::cli {
namespace {

GLogWriterOutput dropLog(GLogLevelFlags, const GLogField*, gsize, gpointer) {
  return G_LOG_WRITER_HANDLED;
}

// Makes --help-all print the groups of each command at the margin, as the command's own help does.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_expanded(const CLI::App* command) const override {
    return "\nCommand " + command->get_name() + ":\n  " + make_description(command) +
           make_positionals(command) + make_groups(command, CLI::AppFormatMode::Sub);
  }
};

void startLibraries(const char* program) {
  // libvips' warnings would be mixed with our lines; what matters comes back as an error.
  g_log_set_writer_func(dropLog, nullptr, nullptr);
  if (vips_init(program) != 0)
    throw FileError(std::string("libvips does not start: ") + vips_error_buffer());
  // No picture is read twice.
  vips_cache_set_max(0);
  initialiseMetadata();
}

int usage(const std::string& reason) {
  // CLI11's messages may have several lines.
  std::string line = reason.substr(0, reason.find('\n'));
  std::fprintf(stderr, "vxicore: %s (--help shows the options)\n", line.c_str());
  return kExitUsage;
}

int run(int argc, char** argv) {
  CLI::App program(
      "Makes photographs better.\n\nExample: vxicore adjust photo.jpg -o better.jpg --preset vivid",
      "vxicore");
  program.formatter(std::make_shared<HelpFormatter>());
  program.get_formatter()->column_width(kHelpNames);
  program.set_version_flag("--version", "vxicore " VX_VERSION);
  AdjustCommand adjust(program);
  EdgeCommand edge(program);
  NoiseCommand noise(program);
  UnblockCommand unblock(program);
  PresetsCommand presets(program);
  // After the commands, which would inherit it.
  program.set_help_all_flag("--help-all", "Show the options of all commands and exit");
  program.require_subcommand(1);
  program.footer("vxicore COMMAND --help shows the options of a command, and examples.\n" +
                 std::string(kExitCodesHelp));
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      const std::string better = advice(program, {argv + 1, argv + argc});
      return usage(better.empty() ? error.what() : better);
    }
    return program.exit(error);
  }
  installSignalHandlers();
  startLibraries(argv[0]);
  for (Command* command :
       std::initializer_list<Command*>{&adjust, &edge, &noise, &unblock, &presets}) {
    if (command->chosen()) return command->run();
  }
  return kExitUsage;  // unreachable: the parser requires one
}

}  // namespace
}  // namespace vx::cli

int main(int argc, char** argv) {
  try {
    return vx::cli::run(argc, argv);
  } catch (const vx::cli::UsageError& error) {
    return vx::cli::usage(error.what());
  } catch (const vx::cli::Cancelled&) {  // before the first picture
    std::fputs("vxicore: cancelled\n", stderr);
    return vx::cli::kExitCancelled;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vxicore: %s\n", error.what());
    return vx::cli::kExitSomeFailed;
  }
}
