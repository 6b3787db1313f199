#include "hosts/cli/commands/plan.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

std::optional<Format> wantedFormat(const FileOptions& options) {
  if (options.format.empty()) return std::nullopt;
  const auto format = formatByName(options.format);
  if (!format) throw UsageError("--format: '" + options.format + "' is not " + formatNames());
  return format;
}

// Where results go: a folder, one file, or (empty) beside each picture.
struct Target {
  fs::path folder;
  std::optional<fs::path> file;
};

Target findTarget(const FileOptions& options, std::size_t pictures, bool folderInput,
                  NewFolders& folders) {
  if (options.output.empty()) {
    if (options.suffix.empty())
      throw UsageError("say where the result goes: -o OUT, or --suffix TEXT");
    return {};
  }
  const fs::path output = options.output;
  std::error_code error;
  const bool exists = fs::exists(output, error);
  const bool folder = fs::is_directory(output, error);
  const bool several = pictures > 1 || folderInput;
  if (several && options.output == kStandardStream)
    throw UsageError("standard output takes one picture");
  if (folder || options.output.ends_with('/') || several) {
    const bool fileName = !options.output.ends_with('/') && formatByExtension(output).has_value();
    if (!folder && (exists || fileName))
      throw UsageError(options.output + ": several pictures need a folder");
    folders.make(output);
    return {.folder = output, .file = std::nullopt};
  }
  return {.folder = {}, .file = output};
}

Format formatOfFile(const fs::path& output, const FileOptions& options,
                    std::optional<Format> format, std::optional<Format> own) {
  if (output == kStandardStream) return format ? *format : own.value_or(Format::kPng);
  const auto byName = formatByExtension(output);
  if (!format && !byName) {
    throw UsageError(output.string() + ": the extension says no format; use that of " +
                     formatNames() + ", or --format");
  }
  if (format && byName && *format != *byName)
    throw UsageError(output.string() + ": the extension contradicts --format " + options.format);
  return format ? *format : *byName;
}

Job makeJob(const Input& input, const Target& target, const FileOptions& options,
            std::optional<Format> format) {
  Job job;
  job.input = input.path;
  std::optional<Format> own;
  try {
    own = formatByContent(input.path);
  } catch (const FileError& error) {
    job.refusal = error.what();
  }
  if (target.file) {
    job.output = *target.file;
    job.format = formatOfFile(job.output, options, format, own);
  } else {
    job.format = format ? *format : own.value_or(Format::kPng);
    // The input's own spelling (.JPG, .jpeg) is kept where it fits the format.
    fs::path extension = input.path.extension();
    if (formatByExtension(input.path) != job.format) extension = traits(job.format).extension;
    const fs::path folder =
        options.output.empty() ? input.path.parent_path() : target.folder / input.subfolder;
    job.output = folder / (input.path.stem().string() + options.suffix + extension.string());
  }
  std::error_code error;
  job.skip = options.skipExisting && !job.toStandardOutput() && fs::exists(job.output, error);
  job.recodes = own == job.format;
  job.inPlace = !job.toStandardOutput() && fs::equivalent(job.input, job.output, error);
  return job;
}

void refuseCollisions(const std::vector<Job>& jobs) {
  std::map<fs::path, const Job*> outputs, inputs;
  const auto place = [](const fs::path& path) {
    std::error_code error;
    const fs::path result = fs::weakly_canonical(path, error);
    return error ? path : result;
  };
  for (const Job& job : jobs) inputs.emplace(place(job.input), &job);
  for (const Job& job : jobs) {
    if (job.toStandardOutput()) continue;
    const fs::path output = place(job.output);
    const auto [other, fresh] = outputs.emplace(output, &job);
    if (!fresh) {
      throw UsageError(other->second->input.string() + " and " + job.input.string() +
                       " would both be written to " + job.output.string());
    }
    const auto input = inputs.find(output);
    if (input != inputs.end() && input->second != &job) {
      throw UsageError("the result of " + job.input.string() + " would replace another input, " +
                       input->second->input.string());
    }
  }
}

// An option for a format that no result has was meant for something else.
void refuseUnused(const std::vector<Job>& jobs, const Coding& coding) {
  const auto check = [&jobs](const char* option, bool given,
                             std::initializer_list<Format> formats) {
    const auto fits = [formats](const Job& job) {
      return std::find(formats.begin(), formats.end(), job.format) != formats.end();
    };
    if (!given || std::any_of(jobs.begin(), jobs.end(), fits)) return;
    std::string names;
    for (const Format format : formats)
      names.append(names.empty() ? "" : " or ").append(traits(format).name);
    throw UsageError(std::string(option) + ": no result is " + names);
  };
  check("--quality", coding.quality.has_value(),
        {Format::kJpeg, Format::kWebp, Format::kHeic, Format::kAvif, Format::kJxl});
  check("--subsampling", coding.subsampled.has_value(), {Format::kJpeg});
  check("--compression", coding.tiffCompression.has_value(), {Format::kTiff});
  check("--lossless", coding.lossless.has_value(), {Format::kWebp, Format::kJxl});
}

// Results of an earlier run with the same suffix lie beside their pictures.
void dropResults(std::vector<Input>& found, const std::string& suffix) {
  std::set<fs::path> stems;
  for (const Input& input : found) stems.insert(fs::path(input.path).replace_extension());
  std::erase_if(found, [&](const Input& input) {
    const std::string stem = fs::path(input.path).replace_extension().string();
    return stem.ends_with(suffix) && stems.contains(stem.substr(0, stem.size() - suffix.size()));
  });
}

std::vector<Input> picturesIn(const fs::path& folder, const FileOptions& options) {
  std::vector<Input> found;
  std::error_code error, ignored;
  const auto skipped = fs::directory_options::skip_permission_denied;
  fs::recursive_directory_iterator entry(folder, skipped, error);
  for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
    const fs::path& path = entry->path();
    const bool hidden = path.filename().string().starts_with('.');
    if (entry->is_directory(ignored)) {
      const bool results = !options.output.empty() && fs::equivalent(path, options.output, ignored);
      if (!options.recursive || hidden || results) entry.disable_recursion_pending();
    } else if (!hidden && formatByExtension(path)) {
      const fs::path below = path.parent_path().lexically_relative(folder);
      found.push_back({path, below == "." ? fs::path() : below});
    }
  }
  if (error) throw UsageError(folder.string() + ": cannot list the folder: " + error.message());
  if (options.output.empty() && !options.suffix.empty()) dropResults(found, options.suffix);
  if (found.empty()) throw UsageError(folder.string() + ": no pictures in this folder");
  const auto byPath = [](const Input& a, const Input& b) { return a.path < b.path; };
  std::sort(found.begin(), found.end(), byPath);
  return found;
}

}  // namespace

NewFolders::~NewFolders() {
  std::error_code error;
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) fs::remove(*folder, error);
}

void NewFolders::make(const fs::path& folder) {
  std::vector<fs::path> missing;
  std::error_code error;
  for (fs::path at = folder; !at.empty() && !fs::exists(at, error); at = at.parent_path())
    missing.push_back(at);
  made_.insert(made_.end(), missing.rbegin(), missing.rend());
  fs::create_directories(folder, error);
  if (error) throw UsageError(folder.string() + ": cannot make this folder: " + error.message());
}

std::vector<Input> expandInputs(const FileOptions& options) {
  if (options.inputs.empty()) throw UsageError("no picture given");
  std::vector<Input> inputs;
  for (const std::string& name : options.inputs) {
    std::error_code error;
    if (name == kStandardStream) {
      inputs.push_back({standardInput(), {}});
    } else if (!fs::is_directory(name, error)) {
      inputs.push_back({name, {}});
    } else {
      const std::vector<Input> found = picturesIn(name, options);
      inputs.insert(inputs.end(), found.begin(), found.end());
    }
  }
  return inputs;
}

Plan planJobs(const FileOptions& options) {
  if (options.suffix.find('/') != std::string::npos)
    throw UsageError("--suffix must not contain a /");
  if (options.json && options.output == kStandardStream)
    throw UsageError("--json and -o - both want standard output");
  if (options.force && options.skipExisting)
    throw UsageError("--force and --skip-existing contradict each other");
  if (options.verbose && (options.quiet || options.json))
    throw UsageError("--verbose goes with neither --quiet nor --json");
  const auto format = wantedFormat(options);
  const std::vector<Input> inputs = expandInputs(options);
  std::error_code error;
  const bool folderInput =
      inputs.size() != options.inputs.size() || fs::is_directory(options.inputs[0], error);
  Plan plan;
  const Target target = findTarget(options, inputs.size(), folderInput, plan.folders);
  for (const Input& input : inputs) {
    if (isStandardInput(input.path) && !target.file)
      throw UsageError("the result of standard input needs a name: -o FILE, or -o -");
    plan.jobs.push_back(makeJob(input, target, options, format));
    if (options.depth > traits(plan.jobs.back().format).maxDepth) {
      throw UsageError("--depth 16: " + std::string(traits(plan.jobs.back().format).name) +
                       " holds 8 bits");
    }
  }
  refuseUnused(plan.jobs, options.coding);
  refuseCollisions(plan.jobs);
  for (const Input& input : inputs)
    if (!input.subfolder.empty() && !options.output.empty())
      plan.folders.make(target.folder / input.subfolder);
  return plan;
}

}  // namespace vx::cli
