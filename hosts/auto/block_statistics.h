// How much a picture deviates within its blocks: what an estimate of noise has to go by.
#pragma once

#include <vector>

#include "hosts/auto/auto_picture.h"

namespace vx::automatic {

/// A block that deviates less around its plane has hardly more than rounding in it: it is dead.
constexpr float kDeadBelow = 0.35F;

/// Deviations of the luma, 0 to 255, in whole blocks; rows of blocks one after the other. A picture
/// below 16 pixels on an axis has none.
struct BlockStatistics {
  /// Blocks of 8 by 8: rms around a fitted plane (divided by 64 - 3, so that white noise gives its
  /// sigma).
  std::vector<float> plane8;
  /// Blocks of 8 by 8: rms of the luma filtered by [1 -2 1; -2 4 -2; 1 -2 1] / 6, of which white
  /// noise gives its sigma, too, and correlated noise less. The picture is mirrored at its edges.
  std::vector<float> fine8;
  /// Blocks of 16 by 16: as plane8.
  std::vector<float> plane16;
  /// Blocks of 8 by 8: what is lost of R, G and B (rms) where the colour is smoothed by [1 2 1] / 4
  /// in both directions and the luma is kept.
  std::vector<float> fineColour8;
  /// Blocks of 8 by 8: how far the slopes of the luma have one direction, 0 to 1: the difference of
  /// the eigenvalues of the structure tensor by their sum (J. Bigün, G. Granlund, "Optimal
  /// orientation detection of linear symmetry", 1987). About 0.2 for noise, 1 for parallel lines.
  std::vector<float> coherence8;
  /// Share of dead blocks of 8 by 8 in the whole picture, clipped ones too.
  double dead = 0;
};

/// In one pass over the picture. Blocks in which a quarter of the pixels is clipped do not count,
/// as noise is cut off there; where fewer than 32 of 8 by 8 would remain, all count. Throws
/// std::bad_alloc.
BlockStatistics blockStatistics(const VxAutoPicture& picture);

}  // namespace vx::automatic
