#include "lqlib/src/failing_trips.h"

#include <omp.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "frame/parallel.h"
#include "jpeg/samples.h"
#include "lqlib/src/stream_bound.h"

namespace vx {
namespace {

TripSums countLevels(const UnblockPlan& plan, std::deque<UnblockStrip>& strips) {
  constexpr int kBandRows = 128;
  const int first = -7, last = plan.height + 8;
  const int bands = (last - first - 1) / kBandRows + 1;
  std::vector<TripSums> parts(static_cast<std::size_t>(bands));
  const auto count = [&](int band, UnblockStrip& strip) {
    const int begin = first + band * kBandRows;
    strip.countLevels(begin, std::min(begin + kBandRows, last), parts[band]);
  };
  if (strips.size() == 1) {
    for (int band = 0; band < bands; ++band) count(band, strips.front());
  } else {
    parallelFor(0, bands, [&](int band) { count(band, strips[omp_get_thread_num()]); });
  }
  TripSums levels{};
  for (const TripSums& part : parts)
    for (std::size_t i = 0; i < 64; ++i) levels[i / 8][i % 8] += part[i / 8][i % 8];
  return levels;
}

}  // namespace

void ShiftedRows::read(int y, int length, std::int16_t* const rows[3]) const {
  jpegSampleRow(source_.row(std::clamp(y - top_, 0, source_.height - 1)), source_.width, useYcc_,
                left_, length, rows);
}

void markFailingTrips(UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source,
                      std::deque<UnblockStrip>& strips) {
  const std::int64_t room = plan.blockBytes() - plan.coding.headerBytes();
  const int width = plan.width + 8, height = plan.height + 8;
  const JpegStreamBound bound(plan.coding, plan.width, plan.height);
  if (bound.fits(RoughnessMap(plan.coding, source), room)) return;
  const TripSums levels = countLevels(plan, strips);
  parallelFor(0, 64, [&](int trip) {
    const int top = trip / 8, left = trip % 8;
    const auto t = static_cast<std::size_t>(top), l = static_cast<std::size_t>(left);
    if (!plan.taken[t] || !plan.taken[l] || bound.fits(levels[t][l], room)) return;
    const ShiftedRows rows(source, plan.coding.useYcc, top, left);
    plan.fails[t][l] =
        room < 0 || jpegEncodeScan(plan.coding, width, height, rows, nullptr, room) > room;
  });
  for (const auto& row : plan.fails)
    plan.failures += static_cast<int>(std::count(row.begin(), row.end(), true));
}

}  // namespace vx
