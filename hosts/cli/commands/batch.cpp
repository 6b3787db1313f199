#include "hosts/cli/commands/batch.h"

#include <omp.h>
#include <unistd.h>
#include <vips/vips.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <optional>

#include "hosts/cli/commands/comparison_page.h"
#include "hosts/cli/commands/worker_pool.h"
#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

using Clock = std::chrono::steady_clock;

std::string duration(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  return whole < 100 ? std::to_string(whole) + " s" : std::to_string((whole + 59) / 60) + " min";
}

/// Tells what becomes of the pictures, one after the other, and at last of all.
class Teller {
 public:
  /// `page` may be null.
  Teller(const FileOptions& options, const Treatment& treatment, std::size_t count,
         ComparisonPage* page)
      : options_(options), treatment_(treatment), count_(count), page_(page) {}

  const PairStore* store() const { return page_ ? &page_->store() : nullptr; }

  void tell(Progress& progress, const Job& job, const JobResult& result) {
    progress.clear();
    if (!options_.quiet)
      for (const auto* list : {&result.notes, &result.chosen})
        for (const std::string& note : *list) complain(job, "note: " + note);
    if (result.status == Status::kFailed) complain(job, result.error);
    if (result.status == Status::kCancelled && count_ == 1) complain(job, "cancelled");
    if (options_.json) put(stdout, jsonLine(job, result, treatment_.settings) + '\n');
    if (options_.verbose && result.status == Status::kDone)
      put(job.toStandardOutput() ? stderr : stdout,
          report(job, result, treatment_.verb, treatment_.settings));
    if (page_) page_->add(job, result);
    if (!result.shown.error.empty()) complain(job, "is not on the page: " + result.shown.error);
    done_ += result.status == Status::kDone;
    damaged_ += result.damaged;
    skipped_ += result.status == Status::kSkipped;
    failed_ += result.status == Status::kFailed;
    pixels_ += static_cast<double>(result.width) * result.height;
  }

  /// "12/100", and how long the others will take.
  std::string position(std::size_t finished) const {
    std::string text = std::to_string(finished) + "/" + std::to_string(count_);
    const std::size_t worked = finished - std::min(finished, skipped_);
    if (worked > 0)
      text += ", " +
              duration(seconds() / static_cast<double>(worked) *
                       static_cast<double>(count_ - finished)) +
              " left";
    return text;
  }

  /// Says how it went; returns the exit code.
  int end(double megabytes) const {
    const bool cancelled = done_ + skipped_ + failed_ < count_;
    const bool whole = writePage() && failed_ == 0;
    if (count_ > 1 && (cancelled || !options_.quiet)) {
      const std::string damaged =
          damaged_ > 0 ? " (" + std::to_string(damaged_) + " of them damaged)" : "";
      std::fprintf(
          stderr,
          "vxicore: %s%zu done%s, %zu skipped, %zu failed in %s; %.1f megapixels a second, "
          "%.0f MB of memory\n",
          cancelled ? "cancelled: " : "", done_, damaged.c_str(), skipped_, failed_,
          duration(seconds()).c_str(), pixels_ / 1e6 / seconds(), megabytes);
    }
    return cancelled ? kExitCancelled : whole ? kExitDone : kExitSomeFailed;
  }

 private:
  bool writePage() const try {
    if (page_) page_->write();
    return page_ == nullptr || !page_->incomplete();
  } catch (const FileError& error) {
    std::fprintf(stderr, "vxicore: %s\n", error.what());
    return false;
  }
  static void complain(const Job& job, const std::string& text) {
    std::fprintf(stderr, "vxicore: %s: %s\n", nameOf(job.input).c_str(), text.c_str());
  }
  static void put(std::FILE* file, const std::string& text) {
    std::fputs(text.c_str(), file);
    std::fflush(file);
  }
  double seconds() const {
    return std::max(1e-3, std::chrono::duration<double>(Clock::now() - start_).count());
  }

  const FileOptions& options_;
  const Treatment& treatment_;
  std::size_t count_, done_ = 0, damaged_ = 0, skipped_ = 0, failed_ = 0;
  double pixels_ = 0;
  ComparisonPage* page_;
  Clock::time_point start_ = Clock::now();
};

int oneByOne(const std::vector<Job>& jobs, const FileOptions& options, const Treatment& treatment,
             Teller& teller) {
  Progress progress(!options.quiet);
  double megabytes = 0;
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const std::string position = jobs.size() > 1 ? teller.position(i) + ": " : "";
    progress.beginPicture(position + jobs[i].input.filename().string());
    JobResult result = ended(Status::kSkipped);
    if (!jobs[i].skip)
      result = treatPicture(jobs[i], options, treatment, teller.store(), {}, progress);
    teller.tell(progress, jobs[i], result);
    megabytes = std::max(megabytes, result.megabytes);
    if (result.status == Status::kCancelled) break;
  }
  return teller.end(megabytes);
}

int severalAtATime(const std::vector<Job>& jobs, int workers, const FileOptions& options,
                   const Treatment& treatment, Teller& teller) {
  Progress progress(!options.quiet), silent(false);
  progress.beginPicture(treatment.verb);
  std::vector<double> megabytes(static_cast<std::size_t>(workers));  // peaks
  PoolWork pool;
  pool.count = jobs.size();
  pool.workers = workers;
  pool.memory =
      static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  pool.begin = [workers] {  // shares out the processors, which changes no result
    omp_set_num_threads(std::max(1, omp_get_max_threads() / workers));
    vips_concurrency_set(std::max(1, vips_concurrency_get() / workers));
  };
  pool.work = [&](std::size_t index, const std::function<void(double)>& claim) {
    JobResult result = ended(Status::kSkipped);
    if (!jobs[index].skip)
      result = treatPicture(jobs[index], options, treatment, teller.store(), claim, silent);
    return packed(result);
  };
  pool.done = [&](std::size_t index, const PieceResult& piece) {
    const Status lost = piece.cancelled ? Status::kCancelled : Status::kFailed;
    const JobResult result = piece.text ? unpacked(*piece.text) : ended(lost, piece.how);
    double& peak = megabytes[piece.worker];
    peak = std::max(peak, result.megabytes);
    if (result.status == Status::kCancelled) requestCancel();
    teller.tell(progress, jobs[index], result);
  };
  pool.idle = [&](std::size_t finished) { progress.say(teller.position(finished)); };
  runPool(pool);
  progress.clear();
  return teller.end(std::accumulate(megabytes.begin(), megabytes.end(), 0.0));
}

void refuseNothing(const std::vector<Job>& jobs, const FileOptions& options) {
  const bool asked = options.depth != 0 || options.previewScale != 1 || options.strip ||
                     options.stripLocation || options.coding != Coding();
  for (const Job& job : jobs)
    if (!asked && job.recodes)
      throw UsageError("nothing was asked for: --auto, --preset or a setting says what to do");
}

}  // namespace

int runBatch(const FileOptions& options, const Treatment& treatment, bool neutral) {
  const Plan plan = planJobs(options);
  if (neutral) refuseNothing(plan.jobs, options);
  const auto count = static_cast<int>(std::min<std::size_t>(plan.jobs.size(), 64));
  const int workers = std::min(count, options.jobs != 0 ? options.jobs : omp_get_num_procs());
  std::optional<ComparisonPage> page;
  if (!options.compare.empty())
    page.emplace(options, treatment.command, treatment.settings, plan.jobs);
  Teller teller(options, treatment, plan.jobs.size(), page ? &*page : nullptr);
  if (workers < 2) return oneByOne(plan.jobs, options, treatment, teller);
  return severalAtATime(plan.jobs, workers, options, treatment, teller);
}

}  // namespace vx::cli
