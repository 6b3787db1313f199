#include "hosts/cli/commands/treat_picture.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/colour.h"
#include "hosts/cli/pictures/metadata.h"
#include "hosts/cli/pictures/output_file.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

using Clock = std::chrono::steady_clock;

double peakMegabytes() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

void append(std::vector<std::string>& list, const std::vector<std::string>& more) {
  list.insert(list.end(), more.begin(), more.end());
}

template <typename Write>
void onOutput(const Job& job, const Write& write) {
  if (job.toStandardOutput()) return;
  try {
    write();
  } catch (const FileError& error) {
    throw FileError("result " + job.output.string() + " " + error.what());
  }
}

// Classic TIFF addresses 4 GB.
constexpr double kMostOfTiff = 3.9e9;

double bytesOf(const Picture& picture, int depth) {
  const int channels = picture.colours + (picture.raster.alphaDepth() > 0 ? 1 : 0);
  return static_cast<double>(picture.raster.width()) * picture.raster.height() * channels * depth /
         8;
}

void noteDepth(Format format, int asked, JobResult& result) {
  const FormatTraits& held = traits(format);
  const std::string name(held.name);
  if (result.resultDepth < result.depth && asked == 0)
    result.notes.push_back("16 bits per sample become 8: " + name + " holds no more");
  if (result.resultDepth > 8 && held.fileDepth < result.resultDepth)
    result.notes.push_back("16 bits per sample become " + std::to_string(held.fileDepth) + ": " +
                           name + " holds no more");
}

void run(const Job& job, const FileOptions& options, const Treatment& treatment,
         const PairStore* page, const std::function<void(double)>& claim, Progress& progress,
         JobResult& result) {
  if (!job.refusal.empty()) throw FileError(job.refusal);
  onOutput(job, [&] { checkWritable(job.output, options.force); });
  auto start = Clock::now();
  const auto lap = [&start] {
    const Clock::time_point now = Clock::now();
    return std::chrono::duration<double>(now - std::exchange(start, now)).count();
  };

  progress.beginStep("reading");
  Metadata metadata(job.input);
  const Metadata::Dropped dropped{.all = options.strip, .location = options.stripLocation};
  const std::string lost = metadata.leaveOut(job.format, dropped);
  if (job.inPlace && !lost.empty() && !options.dropExtras)
    throw FileError("holds what a result in its place would lose: " + lost +
                    "; write another file, or give --drop-extras");
  const ReadOptions wanted{.output = job.format,
                           .depth = options.depth,
                           .previewScale = options.previewScale,
                           .maxMegapixels = options.maxMegapixels,
                           .acceptDamage = options.acceptDamage,
                           .libraryBytes = treatment.libraryBytes + (page ? kPairBytes : 0),
                           .background = options.background,
                           .claim = claim};
  const bool tellsMetadata = options.verbose || options.json;
  if (tellsMetadata)
    result.metadataBefore = Metadata::summary(job.input, formatByContent(job.input));
  std::vector<std::uint8_t> file;
  {
    Picture picture = readPicture(job.input, wanted, progress);
    settleColour(picture, metadata.png(), job.format);
    append(result.notes, std::exchange(picture.notes, {}));
    result.width = picture.raster.width();
    result.height = picture.raster.height();
    result.depth = picture.sourceDepth;
    result.resultDepth = outputDepth(wanted, result.depth);
    result.damaged = picture.damaged;
    noteDepth(job.format, options.depth, result);
    metadata.add(picture);
    metadata.drop(dropped);
    result.seconds.reading = lap();
    PicturePair pair(page);
    pair.takeBefore(picture, metadata.orientation(), progress);
    result.seconds.writing = lap();

    progress.beginStep(treatment.verb);
    treatment.apply(job.input, picture, progress);
    throwIfCancelled();
    result.chosen = std::exchange(picture.notes, {});
    result.seconds.treating = lap();

    progress.beginStep("writing");
    Coding source = job.recodes ? codingOf(job.input, job.format) : Coding();
    if (source.quality) source.quality = std::max(*source.quality, picture.leastQuality);
    Coding coding = chooseCoding(source, options.coding);
    coding.bigTiff |= bytesOf(picture, result.resultDepth) > kMostOfTiff;
    if (traits(job.format).upright) picture.orientation = metadata.takeOrientation();
    const bool lying = picture.orientation >= 5;
    metadata.setSize(lying ? result.height : result.width, lying ? result.width : result.height);
    const bool byEncoder = traits(job.format).metadataByEncoder || coding.bigTiff;
    if (byEncoder) metadata.handTo(picture, job.format);
    file = encodePicture(picture, job.format, result.resultDepth, coding, progress);
    result.shown = pair.takeAfter(picture, job.format, coding, progress);
    // The pixels are freed first: adding metadata needs further copies of the file.
    picture.raster = Raster(1, 1, 8, 0);
    metadata.attach(file, job.format, !picture.icc.empty(), byEncoder);
    append(result.notes, metadata.notes());
  }
  if (job.toStandardOutput())
    writeStandardOutput(file);
  else
    onOutput(job, [&] { writeFile(job.output, file, options.force); });
  result.seconds.writing += lap();
  result.megabytes = peakMegabytes();
  if (tellsMetadata) result.metadataAfter = Metadata::summary(file, job.format);
}

}  // namespace

JobResult treatPicture(const Job& job, const FileOptions& options, const Treatment& treatment,
                       const PairStore* page, const std::function<void(double)>& claim,
                       Progress& progress) {
  try {
    throwIfCancelled();
    JobResult result;
    run(job, options, treatment, page, claim, progress, result);
    return result;
  } catch (const Cancelled&) {
    return ended(Status::kCancelled);
  } catch (const FileError& error) {
    return ended(Status::kFailed, error.what());
  } catch (const std::bad_alloc&) {
    return ended(Status::kFailed, "not enough memory");
  }
}

}  // namespace vx::cli
