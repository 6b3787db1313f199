#include "hosts/cli/commands/file_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace vx::cli {
namespace {

constexpr const char* kFiles = "Pictures in and out";

const CLI::Validator isColour(
    [](const std::string& text) {
      const bool good =
          text.size() == 6 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
      return good ? std::string() : "'" + text + "' is not six hexadecimal digits";
    },
    "");

}  // namespace

std::string helpText(std::string_view text) {
  std::string result;
  std::size_t column = 0;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    if (column > 0) {
      const bool fits = column + 1 + word.size() <= kHelpWidth;
      result += fits ? ' ' : '\n';
      column = fits ? column + 1 : 0;
    }
    result += word;
    column += word.size();
    text.remove_prefix(std::min(word.size() + 1, text.size()));
  }
  std::replace(result.begin(), result.end(), kNoBreak, ' ');
  return result;
}

void addInputOptions(CLI::App& app, FileOptions& options) {
  app.add_option("IN", options.inputs,
                 helpText("Pictures (JPEG, PNG, TIFF, WebP, HEIC, AVIF, JPEG XL), or folders whose "
                          "pictures are taken; - is standard input"))
      ->option_text("...");
  app.add_flag("-r,--recursive", options.recursive,
               helpText("Take the pictures in folders of folders too; results keep the tree"))
      ->group(kFiles);
  app.add_option(
         "--max-megapixels", options.maxMegapixels,
         helpText("Refuse larger pictures; default 500. Up to 29 bytes of memory per pixel are "
                  "needed at 8 bits"))
      ->option_text("M")
      ->check(CLI::Range(0.000001, kMostMegapixels))
      ->group(kFiles);
  app.add_flag("--accept-damage", options.acceptDamage,
               helpText("Take what can be read of damaged files, which are refused else; the "
                        "results are marked in notes and summary"))
      ->group(kFiles);
}

void addOutputOptions(CLI::App& app, FileOptions& options) {
  app.add_option("-o,--output", options.output,
                 helpText("File to write, or folder for the results (made if missing when several "
                          "pictures come in or OUT ends in /); - is standard output"))
      ->option_text("OUT")
      ->group(kFiles);
  app.add_option(
         "--suffix", options.suffix,
         helpText("Put behind the name of each result; without -o results stay beside their "
                  "pictures"))
      ->option_text("TEXT")
      ->group(kFiles);
  app.add_option("--format", options.format,
                 helpText("Of the results; default by the extension of OUT, else as the picture"))
      ->option_text("jpeg|png|tiff|webp|heic|avif|jxl")
      ->group(kFiles);
  app.add_option(
         "--depth", options.depth,
         helpText("Bits per sample of the result; default as the picture (JPEG and WebP hold "
                  "8, HEIC 10, AVIF 12)"))
      ->option_text("8|16")
      ->check(CLI::IsMember({8, 16}))
      ->group(kFiles);
  app.add_option(
         "--quality", options.coding.quality,
         helpText("Of all but PNG and TIFF, 1 to 100; default that of the picture where a JPEG "
                  "becomes a JPEG, else 92, or 80 for HEIC and AVIF"))
      ->option_text("Q")
      ->check(CLI::Range(1, 100))
      ->group(kFiles);
  app.add_option_function<std::string>(
         "--subsampling",
         [&options](const std::string& mode) { options.coding.subsampled = mode == "420"; },
         helpText("Colour of JPEG: full, or half the width and height; default as the picture, "
                  "else 420 below quality 90"))
      ->option_text("444|420")
      ->check(CLI::IsMember({"444", "420"}))
      ->group(kFiles);
  app.add_option("--compression", options.coding.tiffCompression,
                 helpText("Of TIFF, all without loss; default as the picture, else none"))
      ->option_text("none|lzw|deflate|zstd")
      ->check(CLI::IsMember({"none", "lzw", "deflate", "zstd"}))
      ->group(kFiles);
  app.add_flag_function(
         "--lossless", [&options](std::int64_t) { options.coding.lossless = true; },
         helpText("WebP and JPEG XL without loss; default as the picture where a WebP becomes a "
                  "WebP"))
      ->group(kFiles);
  app.add_option("--background", options.background,
                 helpText("Put transparent pictures on this colour where the result cannot hold "
                          "transparency, in hexadecimal digits as in ffffff; refused without"))
      ->option_text("RRGGBB")
      ->check(isColour)
      ->group(kFiles);
  app.add_option("--compare", options.compare,
                 helpText("Write a page, NAME.html, that shows each picture before and after under "
                          "a slider; a browser opens it, and everything is in it"))
      ->option_text("FILE")
      ->group(kFiles);
  app.add_flag("--strip", options.strip,
               helpText("Drop all metadata but the colour profile and the orientation"))
      ->group(kFiles);
  app.add_flag("--strip-location", options.stripLocation,
               helpText("Drop the place where the picture was taken: GPS, names of places, and the "
                        "camera's maker note, which may hold it"))
      ->group(kFiles);
  app.add_flag("--drop-extras", options.dropExtras,
               helpText("Replace a picture in its place (--force) even where something in its file "
                        "is lost by that, as a gain map; refused without"))
      ->group(kFiles);
  app.add_flag("--force", options.force, helpText("Replace files that exist"))->group(kFiles);
  app.add_flag("--skip-existing", options.skipExisting,
               helpText("Leave out pictures whose results exist: goes on with an interrupted run"))
      ->group(kFiles);
  app.add_option("-j,--jobs", options.jobs,
                 helpText("Pictures that are treated at the same time; default as many as there "
                          "are processors, fewer where they need more memory than there is"))
      ->option_text("N")
      ->check(CLI::Range(1, 64))
      ->group(kFiles);
  app.add_flag("-v,--verbose", options.verbose,
               helpText("Tell settings, sizes, seconds, memory and metadata of each picture"))
      ->group(kFiles);
  app.add_flag("-q,--quiet", options.quiet,
               helpText("Tell errors only: no notes, progress and summary"))
      ->group(kFiles);
  app.add_flag("--json", options.json,
               helpText("Print an object per picture, one a line: file, result, status, settings, "
                        "what was chosen, notes, seconds"))
      ->group(kFiles);
}

void addPreviewOption(CLI::App& app, FileOptions& options) {
  app.add_option(
         "--preview-scale", options.previewScale,
         helpText("Reduce the picture by this whole number, 1 to 64, and the radii with it: "
                  "shows what the full result will look like; default 1"))
      ->option_text("N")
      ->check(CLI::Range(1, 64))
      ->group(kFiles);
}

}  // namespace vx::cli
