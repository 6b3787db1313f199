#include "hosts/cli/commands/comparison_page.h"

#include <cstdio>
#include <span>
#include <system_error>

#include "hosts/cli/compare/html.h"
#include "hosts/cli/compare/page_texts.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/console/write_all.h"
#include "hosts/cli/pictures/output_file.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

template <typename Work>
auto named(const fs::path& path, const Work& work) try {
  return work();
} catch (const FileError& error) {
  throw FileError(path.string() + ": " + error.what());
}

fs::path place(const fs::path& path) {
  std::error_code error;
  const fs::path result = fs::weakly_canonical(path, error);
  return error ? path : result;
}

/// Its folder, once it is known that the page can be written there.
fs::path checkedFolder(const fs::path& page, bool force, const std::vector<Job>& jobs) {
  if (page.extension() != ".html" && page.extension() != ".htm")
    throw UsageError("--compare " + page.string() + ": the name has to end in .html");
  for (const Job& job : jobs)
    if (place(page) == place(job.input) || place(page) == place(job.output))
      throw UsageError("--compare " + page.string() + ": is also the name of a picture");
  named(page, [&] { checkWritable(page, force); });
  return page.has_parent_path() ? page.parent_path() : ".";
}

std::string settingsList(const settings::Texts& settings) {
  if (settings.empty()) return "<p class=\"facts\">All neutral.</p>";
  std::string text = "<ul class=\"settings\">";
  for (const auto& [name, value] : settings)
    text += "<li><b>" + escaped(name) + "</b> " + escaped(value) + "</li>";
  return text + "</ul>";
}

std::string facts(const Job& job, const JobResult& result) {
  if (result.status == Status::kSkipped)
    return "Left out: its result exists, <bdi>" + escaped(job.output.string()) + "</bdi>";
  if (result.status != Status::kDone)
    return "<span class=\"failed\">Failed:</span> " + escaped(result.error);
  char megapixels[32];
  std::snprintf(megapixels, sizeof megapixels, " (%.1f megapixels)",
                1e-6 * result.width * result.height);
  std::string text = std::to_string(result.width) + " × " + std::to_string(result.height) +
                     " pixels" + megapixels + ", " + std::to_string(result.depth) + " bits";
  if (result.depth != result.resultDepth) text += " → " + std::to_string(result.resultDepth);
  const std::string output = job.toStandardOutput() ? "standard output" : job.output.string();
  return text + "; result: <bdi>" + escaped(output) + "</bdi>";
}

std::string remarks(const JobResult& result) {
  std::string text;
  for (const auto& [title, lines] :
       {std::pair("Chosen", &result.chosen), std::pair("Note", &result.notes)})
    for (const std::string& line : *lines)
      text += "<dt>" + std::string(title) + "</dt><dd>" + escaped(line) + "</dd>\n";
  if (!result.shown.error.empty())
    text += "<dt>Not shown</dt><dd>" + escaped(result.shown.error) + "</dd>\n";
  return text.empty() ? text : "<dl class=\"remarks\">\n" + text + "</dl>\n";
}

/// What comes before and behind a placeholder of a template.
std::pair<std::string_view, std::string_view> around(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return {text.substr(0, at), text.substr(at + mark.size())};
}

}  // namespace

ComparisonPage::ComparisonPage(const FileOptions& options, const std::string& command,
                               const settings::Texts& settings, const std::vector<Job>& jobs)
    : path_(options.compare),
      force_(options.force),
      command_(command),
      settings_(settingsList(settings)),
      count_(jobs.size()),
      store_{named(path_, [&] { return ScratchFile(checkedFolder(path_, force_, jobs)); }),
             pageRoom(jobs.size())} {}

void ComparisonPage::add(const Job& job, const JobResult& result) {
  if (result.status == Status::kCancelled) return;
  done_ += result.status == Status::kDone;
  skipped_ += result.status == Status::kSkipped;
  failed_ += result.status == Status::kFailed;
  incomplete_ = incomplete_ || !result.shown.error.empty();
  const auto [before, after] = around(kPictureText, "{{pair}}");
  sections_.push_back({.before = filled(before, {{"name", escaped(nameOf(job.input))},
                                                 {"facts", facts(job, result)}}),
                       .after = filled(after, {{"remarks", remarks(result)}}),
                       .pair = result.shown.markup});
}

std::string ComparisonPage::summary() const {
  std::string text = std::to_string(done_) + (done_ == 1 ? " picture" : " pictures");
  if (skipped_ > 0) text += ", " + std::to_string(skipped_) + " left out";
  if (failed_ > 0) text += ", " + std::to_string(failed_) + " failed";
  if (sections_.size() < count_)
    text += ", cancelled with " + std::to_string(count_ - sections_.size()) + " not done";
  return text;
}

void ComparisonPage::write() const {
  if (sections_.empty()) return;
  const auto page = around(kPageText, "{{pictures}}");
  const std::string head = filled(page.first, {{"style hash", sha256InBase64(kStyleText)},
                                               {"script hash", sha256InBase64(kScriptText)},
                                               {"style", kStyleText},
                                               {"script", kScriptText},
                                               {"summary", summary()},
                                               {"version", VX_VERSION},
                                               {"command", escaped(command_)},
                                               {"settings", settings_}});
  named(path_, [&] {
    writeFile(path_, force_, WhenCancelled::kFinish, [&](int file) {
      const auto put = [file](std::string_view text) {
        writeAll(file, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                 "cannot write", WhenCancelled::kFinish);
      };
      put(head);
      for (const Section& section : sections_) {
        put(section.before);
        store_.file.give(section.pair, file);
        put(section.after);
      }
      put(page.second);
    });
  });
}

}  // namespace vx::cli
