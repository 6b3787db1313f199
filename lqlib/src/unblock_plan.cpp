#include "lqlib/src/unblock_plan.h"

#include <algorithm>

#include "frame/parallel.h"
#include "jpeg/jpeg.h"
#include "jpeg/samples.h"
#include "lqlib/src/stream_bound.h"

namespace vx {
namespace {

int subsamplingCode(int jpegMode) {
  const int low = jpegMode & 15;
  return low == 0 ? kJpeg444 : low == 1 ? kJpeg422 : kJpeg420;
}

// The picture in its place inside the larger image.
class ShiftedRows final : public JpegRowSource {
 public:
  ShiftedRows(const ImageBuffer<std::uint8_t, 3>& source, bool useYcc, int top, int left)
      : source_(source), useYcc_(useYcc), top_(top), left_(left) {}

  void read(int y, int length, std::int16_t* const rows[3]) const override {
    jpegSampleRow(source_.row(std::clamp(y - top_, 0, source_.height - 1)), source_.width, useYcc_,
                  left_, length, rows);
  }

 private:
  const ImageBuffer<std::uint8_t, 3>& source_;
  bool useYcc_;
  int top_, left_;
};

}  // namespace

UnblockPlan::UnblockPlan(int w, int h, int quality, int jpegMode, int shiftStep) noexcept
    : width(w),
      height(h),
      coding((jpegMode & 0xF0) == 0, subsamplingCode(jpegMode), quality & 255),
      trips(0) {
  const int step = std::clamp(shiftStep, 1, 8);
  int perAxis = 0;
  for (int margin = 0; margin < 8; margin += step, ++perAxis)
    taken[static_cast<std::size_t>(margin)] = true;
  trips = perAxis * perAxis;
}

std::int64_t UnblockPlan::blockBytes() const {
  const std::int64_t rowBytes = 3 * (std::int64_t{width} + 8);
  constexpr std::int64_t kRowGranule = 32;  // of an ImageBuffer
  const std::int64_t step = (rowBytes + kRowGranule - 1) / kRowGranule * kRowGranule;
  return step * (std::int64_t{height} + 8) + 128;
}

void markFailingTrips(UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source) {
  const std::int64_t room = plan.blockBytes() - plan.coding.headerBytes();
  const JpegStreamBound bound(plan.coding, plan.width + 8, plan.height + 8);
  if (bound.fits(roughEnergies(plan.coding, source), room)) return;
  const ShiftEnergies energies = shiftEnergies(plan.coding, source);
  parallelFor(0, 64, [&](int trip) {
    const auto top = static_cast<std::size_t>(trip / 8), left = static_cast<std::size_t>(trip % 8);
    if (!plan.taken[top] || !plan.taken[left] || bound.fits(energies[top][left], room)) return;
    const ShiftedRows rows(source, plan.coding.useYcc, static_cast<int>(top),
                           static_cast<int>(left));
    plan.fails[top][left] = room < 0 || jpegEncodeScan(plan.coding, plan.width + 8, plan.height + 8,
                                                       rows, nullptr, room) > room;
  });
  for (const auto& row : plan.fails)
    plan.failures += static_cast<int>(std::count(row.begin(), row.end(), true));
}

}  // namespace vx
