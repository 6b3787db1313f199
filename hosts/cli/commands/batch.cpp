#include "hosts/cli/commands/batch.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>

#include "hosts/cli/commands/each_picture.h"
#include "hosts/cli/commands/plan.h"
#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/metadata.h"
#include "hosts/cli/pictures/output_file.h"

namespace vx::cli {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The most that the process has held so far.
double peakMegabytes() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

void tellNotes(Progress& progress, const Job& job, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) tell(progress, job.input, "note: " + note);
}

struct Timing {
  double reading, treating, writing;
};

void report(const Job& job, const Treatment& treatment, int width, int height, int inDepth,
            int outDepth, const Timing& time, const std::vector<std::uint8_t>& file) {
  const double pixels = static_cast<double>(width) * height;
  const double total = time.reading + time.treating + time.writing;
  std::printf("%s -> %s\n", job.input.c_str(), job.output.c_str());
  std::printf("  settings  %s\n", treatment.settings.c_str());
  std::printf("  picture   %d x %d (%.1f megapixels), %d bits", width, height, pixels / 1e6,
              inDepth);
  if (inDepth != outDepth) std::printf(" -> %d bits", outDepth);
  std::printf("\n  seconds   %.2f (reading %.2f, %s %.2f, writing %.2f)\n", total, time.reading,
              treatment.verb.c_str(), time.treating, time.writing);
  std::printf("  memory    %.0f MB at the peak\n", peakMegabytes());
  const std::string before = Metadata::summary(job.input), after = Metadata::summary(file);
  if (before == after) {
    std::printf("  metadata  kept: %s\n", after.c_str());
  } else {
    std::printf("  metadata  %s (before: %s)\n", after.c_str(), before.c_str());
  }
  std::fflush(stdout);
}

void runJob(const Job& job, const FileOptions& options, const Treatment& treatment,
            Progress& progress) {
  if (!job.refusal.empty()) throw FileError(job.refusal);
  try {
    checkWritable(job.output, options.force);
  } catch (const FileError& error) {
    throw FileError("result " + job.output.string() + " " + error.what());
  }
  Timing time{};
  auto start = Clock::now();
  const auto lap = [&start] {
    const double seconds = secondsSince(start);
    start = Clock::now();
    return seconds;
  };

  progress.beginStep("reading");
  const ReadOptions wanted{.output = job.format,
                           .depth = options.depth,
                           .previewScale = options.previewScale,
                           .maxMegapixels = options.maxMegapixels,
                           .libraryBytes = treatment.libraryBytes};
  std::vector<std::uint8_t> file;
  int width = 0, height = 0, inDepth = 0, outDepth = 0;
  {
    Picture picture = readPicture(job.input, wanted, progress);
    tellNotes(progress, job, picture.notes);
    width = picture.raster.width();
    height = picture.raster.height();
    inDepth = picture.sourceDepth;
    outDepth = outputDepth(wanted, inDepth);
    Metadata metadata(job.input, picture);
    time.reading = lap();

    progress.beginStep(treatment.verb);
    picture.notes.clear();
    treatment.apply(job.input, picture, progress);
    throwIfCancelled();
    tellNotes(progress, job, picture.notes);
    time.treating = lap();

    progress.beginStep("writing");
    file = encodePicture(picture, job.format, outDepth, options.quality, progress);
    // The pixels are freed first: adding metadata needs further copies of the file.
    picture.raster = Raster(1, 1, 8, 0);
    metadata.setSize(width, height);
    metadata.attach(file, job.format);
    tellNotes(progress, job, metadata.notes());
  }
  try {
    writeFile(job.output, file, options.force);
  } catch (const FileError& error) {
    throw FileError("result " + job.output.string() + " " + error.what());
  }
  time.writing = lap();
  progress.clear();
  if (options.verbose) report(job, treatment, width, height, inDepth, outDepth, time, file);
}

}  // namespace

int runBatch(const FileOptions& options, const Treatment& treatment) {
  const std::vector<Job> jobs = planJobs(options);
  std::vector<std::filesystem::path> inputs;
  for (const Job& job : jobs) inputs.push_back(job.input);
  return forEachPicture(inputs, [&](std::size_t index, Progress& progress) {
    runJob(jobs[index], options, treatment, progress);
  });
}

}  // namespace vx::cli
