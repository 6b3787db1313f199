// The options that subcommands share: input pictures, destination and format.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hosts/cli/pictures/coding.h"

namespace CLI {
class App;
}

namespace vx::cli {

/// The upper end of --max-megapixels.
inline constexpr double kMostMegapixels = 90000;

struct FileOptions {
  std::vector<std::string> inputs;
  std::string output;
  std::string suffix;
  std::string format;  // empty: by the output's extension
  int depth = 0;       // 0: as the input
  Coding coding;       // what is open is taken from the picture
  int previewScale = 1;
  double maxMegapixels = 500;
  bool acceptDamage = false;
  int jobs = 0;            // 0: as many as there are processors
  std::string compare;     // page of before and after; empty: none
  std::string background;  // for transparency where the result holds none; empty: refuse
  bool recursive = false;
  bool skipExisting = false;
  bool strip = false;
  bool stripLocation = false;
  bool dropExtras = false;
  bool force = false;
  bool verbose = false;
  bool quiet = false;
  bool json = false;
};

/// The name of standard input and output on the command line.
inline constexpr const char* kStandardStream = "-";

/// Pictures to read; `options` has to outlive the parsing, here and below.
void addInputOptions(CLI::App& app, FileOptions& options);
/// Results to write.
void addOutputOptions(CLI::App& app, FileOptions& options);
/// For subcommands whose settings are radii that can be reduced along with the picture.
void addPreviewOption(CLI::App& app, FileOptions& options);

/// Columns of the help: names, then descriptions.
inline constexpr std::size_t kHelpNames = 30;
inline constexpr std::size_t kHelpWidth = 68;

/// A space that helpText() does not break at.
inline constexpr char kNoBreak = '\x1f';

/// A description in lines of at most kHelpWidth characters, broken at spaces.
std::string helpText(std::string_view text);

}  // namespace vx::cli
