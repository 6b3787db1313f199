#pragma once

// One pass of the non-local filter: differences summed directly, positions scanned one by one, and
// in double precision transforms as sums over the definition.

#include <vector>

#include "tests/support/images.h"
#include "vxenhlib/nonlocal/nl_im_dn_cn.h"

namespace vx::test {

using Planes = std::vector<const Plane*>;

struct NonLocalResult {
  std::vector<std::vector<double>> planes;  ///< rows one after the other
  std::vector<int> stacks;                  ///< how many stacks of each depth, 0 to 16
};

/// The pass with the settings and geometry of `filter`, for stacks of at most stackLimit blocks.
/// Blocks are chosen by the samples that `quantised` holds, at costs up to its limit.
NonLocalResult referencePass(const CNLImDnCn& filter, std::size_t stackLimit,
                             const QuantisedGuides& quantised, const Plane& source,
                             const Plane* pilot, const Planes& in);

/// Sum of squared differences between the blocks at (ax, ay) and (bx, by), in all guides.
std::int64_t blockDistance(const QuantisedGuides& guides, int ax, int ay, int bx, int by,
                           int blockSize);

/// Patches and noise around 0, in whole multiples of `unit`.
void fillUnits(Plane& p, unsigned seed, float unit, float contrast, float sigma);

/// The larger one. Unlike with std::max a NaN stays, and then fails every comparison.
inline void raise(double& worst, double difference) {
  if (!std::isnan(worst) && !(difference <= worst)) worst = difference;
}

}  // namespace vx::test
