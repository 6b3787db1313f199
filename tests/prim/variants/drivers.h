#pragma once

// The driver of every primitive whose arguments follow from their types and names: images with
// their steps, width and height, lists, values, and one setting. The other headers of drivers hold
// the exceptions.

#include <algorithm>
#include <climits>
#include <memory>

#include "tests/prim/variants/match.h"

namespace vx::test {

/// The integer behind width and height, what it asks of the call and of the source.
struct Setting {
  int value;
  Expect expect;
  Frame frame;
};

inline Setting chooseMask(const Prim& entry, Trial& t) {
  const int small = entry.has("Vert") ? 13 : entry.has("Horiz") ? 31 : 33;
  const int large = entry.has("Vert") ? 15 : entry.has("Horiz") ? 51 : 55;
  const int mask = t.oneIn(10) ? t.pick({0, 11, 13, 31, 35, -33, 77}) : t.pick({small, large});
  // An unsupported mask of one primitive is the mask of another and must not be taken for it.
  if (mask != small && mask != large) return {mask, Expect::anything, {}};
  const int x = mask / 10 / 2, y = mask % 10 / 2;
  return {mask, expectIn(entry, t), {x, y, x, y}};
}

inline Setting chooseSetting(const Prim& entry, Trial& t) {
  const Expect expect = expectIn(entry, t);
  if (entry.takes("roundMode")) return {t.pick({0, 1, 1, 2, 7, -1}), expect, {}};
  if (entry.takes("selector")) return {t.pick({0, 1, 2, 3, 4, 5, -1}), expect, {}};
  if (entry.takes("hint")) return {t.pick({0, 1, 2}), expect, {}};
  if (entry.takes("mask)")) return chooseMask(entry, t);
  if (entry.takes("scaleFactor"))
    return {t.oneIn(8)   ? t.pick({INT_MIN, -33, -32, -31, 31, 32, 33, INT_MAX})
            : t.oneIn(3) ? t.pick({0, 1})
                         : t.uniform(-18, 18),
            expect,
            {}};
  return {0, expect, entry.has("3x3") ? Frame{1, 1, 1, 1} : Frame{}};
}

/// Makes the arguments of one call, from the first to the last.
struct Operands {
  const Prim& entry;
  Trial& t;
  const Setting& setting;
  std::vector<std::unique_ptr<GuardedImage>> owned{};
  Images images{};
  std::size_t next = 0;

  template <class E>
  Image<E>* keep(Image<E>* image) {
    owned.emplace_back(image);
    images.push_back(image);
    return image;
  }

  template <class T>
  T argument() {
    const std::size_t i = next++;
    const std::string_view name = entry.argument(i);
    if constexpr (std::is_pointer_v<T>) {
      using E = std::remove_const_t<std::remove_pointer_t<T>>;
      constexpr bool kConst = std::is_const_v<std::remove_pointer_t<T>>;
      const Role role = kConst ? Role::read : Role::write;
      const Pixels pixels = kConst ? entry.source : entry.destination;
      if (!entry.argument(i + 1).ends_with("tep")) {
        const int length = entry.has("primv") ? t.width : kConst ? pixels.used : 1;
        return keep(new Image<E>(t, role, listOf(length)))->data();
      }
      auto* image = keep(new Image<E>(t, role, pixels, kConst ? setting.frame : Frame{}));
      if constexpr (std::is_same_v<E, std::uint8_t>)
        for (int y = 0; y < t.height && name == "mask"; ++y)
          for (int x = 0; x < t.width; ++x) image->set(x, y, t.pick<E>({0, 0, 1, 128, 255}));
      return image->data();
    } else if constexpr (std::is_same_v<T, int>) {
      return name.ends_with("tep")                 ? images.back()->step()
             : name == "width" || name == "length" ? t.width
             : name == "height"                    ? t.height
                                                   : setting.value;
    } else {
      return t.oneIn(3) ? t.pick({T(0), T(1), T(-0.0f)}) : t.value<T>();
    }
  }
};

/// Windows refuse sizes below 3, the transposition all but squares.
template <class... Args>
void drive(const Prim& entry, Row<Args...> row) {
  forTrials(entry, [&](Trial& t) {
    if (entry.has("Transpose") && !t.oneIn(20)) t.height = t.width = t.width % 300;
    Setting setting = chooseSetting(entry, t);
    if ((entry.has("Win") && std::min(t.width, t.height) < 3) ||
        (entry.has("Transpose") && t.width != t.height))
      setting.expect = Expect::anything;
    Operands operands{entry, t, setting};
    const std::tuple<Args...> args{operands.argument<Args>()...};
    std::apply([&](auto... a) { match(entry, t, row, operands.images, setting.expect, a...); },
               args);
  });
}

}  // namespace vx::test
