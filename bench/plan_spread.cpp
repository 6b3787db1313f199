// How far results of the non-local noise filter differ between processes, each of which lets FFTW
// choose its plans by timing afresh.
//
//     plan_spread [PROCESSES]

#include <omp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/noise_picture.h"
#include "frame/exports/load.h"
#include "prim/float_mode.h"

namespace {

constexpr int kWidth = 600, kHeight = 400;
constexpr std::size_t kSamples = std::size_t{3} * kWidth * kHeight;

// Writes the filtered samples; a process of its own, so that no plan is known yet.
int filterTo(int file) {
  vx::attachProcess();
  const vx::prim::FloatModeGuard floatMode;
  omp_set_num_threads(1);
  vx::NoisePicture picture(kWidth, kHeight);
  picture.restore();
  picture.denoise(1);
  for (int y = 0; y < kHeight; ++y) {
    const auto* row = reinterpret_cast<const char*>(picture.work.row(y));
    const std::size_t bytes = 3 * sizeof(float) * kWidth;
    for (std::size_t done = 0; done < bytes;) {
      const ssize_t count = write(file, row + done, bytes - done);
      if (count < 1) return 1;
      done += static_cast<std::size_t>(count);
    }
  }
  return 0;
}

bool resultOfProcess(const char* self, std::vector<float>& samples) {
  int ends[2];
  if (pipe(ends) != 0) return false;
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    execl("/proc/self/exe", self, "--write", std::to_string(ends[1]).c_str(), nullptr);
    _exit(1);
  }
  close(ends[1]);
  samples.resize(kSamples);
  auto* to = reinterpret_cast<char*>(samples.data());
  std::size_t left = kSamples * sizeof(float);
  while (left > 0) {
    const ssize_t count = read(ends[0], to, left);
    if (count < 1) break;
    to += count;
    left -= static_cast<std::size_t>(count);
  }
  close(ends[0]);
  int status = 1;
  return waitpid(child, &status, 0) == child && status == 0 && left == 0;
}

long levelOf(float sample, float scale) { return std::lround(sample * scale); }

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "--write") return filterTo(std::atoi(argv[2]));
  const int processes = argc > 1 ? std::max(std::atoi(argv[1]), 2) : 10;
  std::vector<std::vector<float>> results(static_cast<std::size_t>(processes));
  for (auto& result : results)
    if (!resultOfProcess(argv[0], result)) return 1;

  std::vector<std::size_t> kinds;  // the first result of each kind
  for (std::size_t i = 0; i < results.size(); ++i)
    if (std::none_of(kinds.begin(), kinds.end(),
                     [&](std::size_t k) { return results[k] == results[i]; }))
      kinds.push_back(i);
  double largest = 0.0, sum = 0.0;
  std::size_t bytes = 0, words = 0;
  for (std::size_t s = 0; s < kSamples; ++s) {
    float low = results[0][s], high = low;
    for (const auto& result : results) {
      low = std::min(low, result[s]);
      high = std::max(high, result[s]);
    }
    const double spread = double{high} - double{low};
    largest = std::max(largest, spread);
    sum += spread * spread;
    bytes += levelOf(low, 256.0f) != levelOf(high, 256.0f) ? 1 : 0;
    words += levelOf(low, 32768.0f) != levelOf(high, 32768.0f) ? 1 : 0;
  }
  const double count = static_cast<double>(kSamples);
  std::printf("%d processes, %zu different results of %d x %d\n", processes, kinds.size(), kWidth,
              kHeight);
  std::printf("largest spread of a sample %.3g of white, root of the mean square %.3g\n", largest,
              std::sqrt(sum / count));
  std::printf("samples that differ in 8 bits: %zu (%.2g), in 16 bits: %zu (%.2g) of %zu\n", bytes,
              static_cast<double>(bytes) / count, words, static_cast<double>(words) / count,
              kSamples);
}
