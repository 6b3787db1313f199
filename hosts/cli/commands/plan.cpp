#include "hosts/cli/commands/plan.h"

#include <algorithm>
#include <map>
#include <optional>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

std::optional<Format> wantedFormat(const FileOptions& options) {
  if (options.format.empty()) return std::nullopt;
  const auto format = formatByName(options.format);
  if (!format)
    throw UsageError("--format: '" + options.format + "' is not jpeg, png, tiff or webp");
  return format;
}

// Where results go: a folder, one file, or (empty) beside each picture.
struct Target {
  fs::path folder;
  std::optional<fs::path> file;
};

Target findTarget(const FileOptions& options, std::size_t pictures, bool folderInput) {
  if (options.output.empty()) {
    if (options.suffix.empty())
      throw UsageError("say where the result goes: -o OUT, or --suffix TEXT");
    return {};
  }
  const fs::path output = options.output;
  std::error_code error;
  const bool exists = fs::exists(output, error);
  const bool folder = fs::is_directory(output, error);
  if (folder || options.output.ends_with('/') || pictures > 1 || folderInput) {
    const bool fileName = !options.output.ends_with('/') && formatByExtension(output).has_value();
    if (!folder && (exists || fileName))
      throw UsageError(options.output + ": several pictures need a folder");
    fs::create_directories(output, error);
    if (error) throw UsageError(options.output + ": cannot make this folder: " + error.message());
    return {.folder = output, .file = std::nullopt};
  }
  return {.folder = {}, .file = output};
}

Job makeJob(const fs::path& input, const Target& target, const FileOptions& options,
            std::optional<Format> format) {
  Job job{.input = input, .output = {}, .format = {}, .refusal = {}};
  std::optional<Format> own;
  try {
    own = formatByContent(input);
  } catch (const FileError& error) {
    job.refusal = error.what();
  }
  if (target.file) {
    job.output = *target.file;
    const auto byName = formatByExtension(job.output);
    if (!format && !byName) {
      throw UsageError(
          job.output.string() +
          ": the extension says no format; use .jpg, .png, .tif or .webp, or --format");
    }
    if (format && byName && *format != *byName) {
      throw UsageError(job.output.string() + ": the extension contradicts --format " +
                       options.format);
    }
    job.format = format ? *format : *byName;
    return job;
  }
  job.format = format ? *format : own.value_or(Format::kPng);
  // The input's own spelling (.JPG, .jpeg) is kept where it fits the format.
  fs::path extension = input.extension();
  if (formatByExtension(input) != job.format) extension = traits(job.format).extension;
  const fs::path folder = options.output.empty() ? input.parent_path() : target.folder;
  job.output = folder / (input.stem().string() + options.suffix + extension.string());
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

}  // namespace

std::vector<fs::path> expandInputs(const std::vector<std::string>& inputs) {
  if (inputs.empty()) throw UsageError("no picture given");
  std::vector<fs::path> paths;
  for (const std::string& input : inputs) {
    std::error_code error;
    if (!fs::is_directory(input, error)) {
      paths.emplace_back(input);
      continue;
    }
    std::vector<fs::path> found;
    for (fs::directory_iterator entry(input, error), end; !error && entry != end;
         entry.increment(error)) {
      const bool hidden = entry->path().filename().string().starts_with('.');
      if (!hidden && formatByExtension(entry->path())) found.push_back(entry->path());
    }
    if (error) throw UsageError(input + ": cannot list the folder: " + error.message());
    if (found.empty()) throw UsageError(input + ": no pictures in this folder");
    std::sort(found.begin(), found.end());
    paths.insert(paths.end(), found.begin(), found.end());
  }
  return paths;
}

std::vector<Job> planJobs(const FileOptions& options) {
  if (options.suffix.find('/') != std::string::npos)
    throw UsageError("--suffix must not contain a /");
  const auto format = wantedFormat(options);
  const std::vector<fs::path> inputs = expandInputs(options.inputs);
  std::error_code error;
  const bool folderInput =
      inputs.size() != options.inputs.size() || fs::is_directory(options.inputs[0], error);
  const Target target = findTarget(options, inputs.size(), folderInput);
  std::vector<Job> jobs;
  for (const fs::path& input : inputs) {
    jobs.push_back(makeJob(input, target, options, format));
    if (options.depth > traits(jobs.back().format).maxDepth) {
      throw UsageError("--depth 16: " + std::string(traits(jobs.back().format).name) +
                       " holds 8 bits");
    }
  }
  refuseCollisions(jobs);
  return jobs;
}

}  // namespace vx::cli
