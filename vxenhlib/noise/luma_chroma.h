#pragma once

#include "frame/img.h"
#include "frame/plane_view.h"

// The space in which noise is measured and filtered: luma on 0 to 1 / 1.402 for planes of 0 to 1,
// and two chroma planes whose rows sum to zero, so that grey has none. All noise values are on this
// scale.

namespace vx {

/// Turns three colour planes into luma and two chroma planes, in place.
///
/// @param planes   of the size of the first; the whole of each is taken, whatever its region
/// @param centred  true: grey has the chroma 0; false: 0.61176 and 0.53725, which keeps the chroma
///   of planes of 0 to 1 above 0
/// @return 1 always; planes of which one has no memory stay as they are
int toLumaChroma(GIMG<float>* const planes[3], bool centred);

/// The way back, exact to four digits.
int fromLumaChroma(GIMG<float>* const planes[3], bool centred);

/// Both for rows of planes that lie equally far apart in all three.
void toLumaChroma(const PlaneView rows[3], bool centred);
void fromLumaChroma(const PlaneView rows[3], bool centred);

}  // namespace vx
