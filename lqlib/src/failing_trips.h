#pragma once

#include <cstdint>
#include <deque>

#include "frame/image_buffer.h"
#include "lqlib/src/unblock_plan.h"
#include "lqlib/src/unblock_strip.h"

namespace vx {

/// The rows of the larger image that one trip codes: the picture in its place, its edges repeated.
class ShiftedRows final : public JpegRowSource {
 public:
  ShiftedRows(const ImageBuffer<std::uint8_t, 3>& source, bool useYcc, int top, int left)
      : source_(source), useYcc_(useYcc), top_(top), left_(left) {}

  void read(int y, int length, std::int16_t* const rows[3]) const override;

 private:
  const ImageBuffer<std::uint8_t, 3>& source_;
  bool useYcc_;
  int top_, left_;
};

/// Marks the trips of the plan whose stream would not fit into its block. Upper bounds prove almost
/// always that all do, first one from the roughness of the picture, then, where levels are fine,
/// one from the levels themselves; the trips that these leave open are coded and their bits
/// counted.
///
/// @param strips   one for each thread
void markFailingTrips(UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source,
                      std::deque<UnblockStrip>& strips);

}  // namespace vx
