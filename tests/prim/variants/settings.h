#pragma once

#include <algorithm>
#include <climits>
#include <cmath>

#include "tests/prim/variants/match.h"

namespace vx::test {

/// The integer behind width and height, what it asks of the call and of the source.
struct ChosenSetting {
  int value = 0;
  Expect expect = Expect::success;
  Frame frame{};
};

inline ChosenSetting chooseMask(const Prim& entry, Trial& t) {
  const int small = entry.has("Vert") ? 13 : entry.has("Horiz") ? 31 : 33;
  const int large = entry.has("Vert") ? 15 : entry.has("Horiz") ? 51 : 55;
  const bool supported = !t.oneIn(10);
  const int mask = supported ? t.pick({small, large}) : t.pick({0, 11, 13, 31, 35, -33, 77});
  const int x = supported ? mask / 10 / 2 : 0, y = supported ? mask % 10 / 2 : 0;
  // An unsupported mask of one primitive is the mask of another and must not be taken for it.
  const bool works = mask == small || mask == large;
  return {mask, works ? expectIn(t) : Expect::anything,
          works && !supported ? Frame{2, 2, 2, 2} : Frame{x, y, x, y}};
}

inline ChosenSetting chooseSetting(const Prim& entry, Trial& t) {
  switch (entry.setting) {
    case Setting::roundMode:
      return {t.pick({0, 1, 1, 2, 7, -1}), expectIn(t)};
    case Setting::selector:
      return {t.pick({0, 1, 2, 3, 4, 5, -1}), expectIn(t)};
    case Setting::mask:
      return chooseMask(entry, t);
    case Setting::scaleFactor:
      return {t.oneIn(8)   ? t.pick({INT_MIN, -33, -32, -31, 31, 32, 33, INT_MAX})
              : t.oneIn(3) ? t.pick({0, 1})
                           : t.uniform(-18, 18),
              expectIn(t)};
    case Setting::none:
      break;
  }
  ADD_FAILURE() << "no values are known for the last argument of " << entry.name;
  return {};
}

inline void drawMask(Trial& t, Image<std::uint8_t>& mask) {
  for (int y = 0; y < t.height; ++y)
    for (int x = 0; x < t.width; ++x) mask.set(x, y, t.pick<std::uint8_t>({0, 0, 1, 128, 255}));
}

/// Rising levels over the range of the trial's values; a few repeat, so that segments are empty.
template <class T>
void drawRising(Trial& t, Image<T>& levels, int count) {
  const bool repeats = t.oneIn(4);
  double level = t.fill == Fill::unit || t.fill == Fill::few ? 0.0 : -64.0;
  const double range = t.fill == Fill::unit || t.fill == Fill::few ? 1.0 : 400.0;
  for (int i = 0; i < count; ++i) {
    levels.set(i, 0, static_cast<T>(level));
    if (!repeats || !t.oneIn(3)) level += range / count * (0.25 * t.uniform(1, 6));
  }
}

}  // namespace vx::test
