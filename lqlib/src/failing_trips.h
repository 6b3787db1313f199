#pragma once

#include <cstdint>
#include <deque>

#include "frame/image_buffer.h"
#include "lqlib/src/unblock_plan.h"
#include "lqlib/src/unblock_strip.h"

namespace vx {

/// Marks the trips of the plan whose stream would not fit into its block. Upper bounds prove almost
/// always that all do, first one from the roughness of the picture, then, where levels are fine,
/// one from the levels themselves; the trips that these leave open are coded and their bits
/// counted.
///
/// @param strips   one for each thread
void markFailingTrips(UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source,
                      std::deque<UnblockStrip>& strips);

}  // namespace vx
