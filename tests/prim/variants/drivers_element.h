#pragma once

// Drivers of the primitives that take one element after the other; one for each signature. Their
// settings are in settings.h.

#include <algorithm>
#include <utility>

#include "tests/prim/variants/match.h"
#include "tests/prim/variants/settings.h"

namespace vx::test {

// source to destination; the 3 x 3 morphology too, whose source has a frame
template <class S, class D>
void drive(const Prim& entry, Row<const S*, int, D*, int, int, int> row) {
  const Frame frame = entry.has("3x3") ? Frame{1, 1, 1, 1} : Frame{};
  forTrials(entry, [&](Trial& t) {
    Image<S> src(t, Role::read, entry.source, frame);
    Image<D> dst(t, Role::write, entry.destination);
    match(entry, t, row, {&src, &dst}, expectIn(t), src.data(), src.step(), dst.data(), dst.step(),
          t.width, t.height);
  });
}

// source to destination with a round mode, a scale factor or a mask size
template <class S, class D>
void drive(const Prim& entry, Row<const S*, int, D*, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const ChosenSetting chosen = chooseSetting(entry, t);
    Image<S> src(t, Role::read, entry.source, chosen.frame);
    Image<D> dst(t, Role::write, entry.destination);
    match(entry, t, row, {&src, &dst}, chosen.expect, src.data(), src.step(), dst.data(),
          dst.step(), t.width, t.height, chosen.value);
  });
}

// source to destination under a mask
template <class T>
void drive(const Prim& entry, Row<const T*, int, T*, int, int, int, const std::uint8_t*, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> src(t, Role::read), dst(t, Role::write);
    Image<std::uint8_t> mask(t, Role::read);
    drawMask(t, mask);
    match(entry, t, row, {&src, &dst, &mask}, expectIn(t), src.data(), src.step(), dst.data(),
          dst.step(), t.width, t.height, mask.data(), mask.step());
  });
}

// value under a mask
template <class T>
void drive(const Prim& entry, Row<T, T*, int, int, int, const std::uint8_t*, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> dst(t, Role::write);
    Image<std::uint8_t> mask(t, Role::read);
    drawMask(t, mask);
    match(entry, t, row, {&dst, &mask}, expectIn(t), t.value<T>(), dst.data(), dst.step(), t.width,
          t.height, mask.data(), mask.step());
  });
}

// value and image
template <class T>
void drive(const Prim& entry, Row<T, T*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> dst(t, Role::write);
    match(entry, t, row, {&dst}, expectIn(t), t.value<T>(), dst.data(), dst.step(), t.width,
          t.height);
  });
}

// value and image with a scale factor
template <class T>
void drive(const Prim& entry, Row<T, T*, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const ChosenSetting chosen = chooseSetting(entry, t);
    Image<T> dst(t, Role::write);
    const T value = t.oneIn(6) ? T{0} : t.value<T>();
    match(entry, t, row, {&dst}, chosen.expect, value, dst.data(), dst.step(), t.width, t.height,
          chosen.value);
  });
}

// one value for each channel
template <class T>
void drive(const Prim& entry, Row<const T*, T*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto values = list<T>(t, Role::read, entry.destination.used);
    Image<T> dst(t, Role::write, entry.destination);
    match(entry, t, row, {&values, &dst}, expectIn(t), values.data(), dst.data(), dst.step(),
          t.width, t.height);
  });
}

// source and value to destination
template <class T>
void drive(const Prim& entry, Row<const T*, int, T, T*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> src(t, Role::read), dst(t, Role::write);
    match(entry, t, row, {&src, &dst}, expectIn(t), src.data(), src.step(), t.value<T>(),
          dst.data(), dst.step(), t.width, t.height);
  });
}

// source compared with a value
template <class T>
void drive(const Prim& entry, Row<const T*, int, T, std::uint8_t*, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const ChosenSetting chosen = chooseSetting(entry, t);
    Image<T> src(t, Role::read);
    Image<std::uint8_t> dst(t, Role::write);
    const T value = t.oneIn(2) ? src.get(t.uniform(0, t.width - 1)) : t.value<T>();
    match(entry, t, row, {&src, &dst}, chosen.expect, src.data(), src.step(), value, dst.data(),
          dst.step(), t.width, t.height, chosen.value);
  });
}

// two sources to destination
template <class S, class D>
void drive(const Prim& entry, Row<const S*, int, const S*, int, D*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<S> a(t, Role::read), b(t, Role::read);
    Image<D> dst(t, Role::write);
    match(entry, t, row, {&a, &b, &dst}, expectIn(t), a.data(), a.step(), b.data(), b.step(),
          dst.data(), dst.step(), t.width, t.height);
  });
}

// two sources to destination with a selector or a scale factor
template <class S, class D>
void drive(const Prim& entry, Row<const S*, int, const S*, int, D*, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const ChosenSetting chosen = chooseSetting(entry, t);
    Image<S> a(t, Role::read), b(t, Role::read);
    Image<D> dst(t, Role::write);
    match(entry, t, row, {&a, &b, &dst}, chosen.expect, a.data(), a.step(), b.data(), b.step(),
          dst.data(), dst.step(), t.width, t.height, chosen.value);
  });
}

// in place; windows refuse sizes below 3, the transposition works on squares only
template <class T>
void drive(const Prim& entry, Row<T*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    if (entry.has("Transpose") && !t.oneIn(20)) t.height = t.width = t.width % 300;
    const bool mayRefuse = (entry.has("Win") && std::min(t.width, t.height) < 3) ||
                           (entry.has("Transpose") && t.width != t.height);
    Image<T> image(t, Role::write);
    match(entry, t, row, {&image}, mayRefuse ? Expect::anything : expectIn(t), image.data(),
          image.step(), t.width, t.height);
  });
}

// in place against a level
template <class T>
void drive(const Prim& entry, Row<T*, int, int, int, T> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> image(t, Role::write);
    match(entry, t, row, {&image}, expectIn(t), image.data(), image.step(), t.width, t.height,
          t.value<T>());
  });
}

// in place against one level for each channel
template <class T>
void drive(const Prim& entry, Row<T*, int, int, int, const T*> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> image(t, Role::write, entry.destination);
    auto levels = list<T>(t, Role::read, entry.destination.used);
    match(entry, t, row, {&image, &levels}, expectIn(t), image.data(), image.step(), t.width,
          t.height, levels.data());
  });
}

// source into a larger destination
template <class T>
void drive(const Prim& entry, Row<const T*, int, int, int, T*, int, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int left = t.uniform(0, 20), top = t.uniform(0, 4);
    // one time in 8 the source does not fit or lies outside
    const bool misplaced = t.oneIn(8);
    const int dstWidth = left + t.width + t.uniform(0, 20);
    const int dstHeight = top + t.height + t.uniform(0, 4);
    Image<T> src(t, Role::read, entry.source);
    Image<T> dst(t, Role::write, Shape{dstWidth, dstHeight, entry.destination});
    match(entry, t, row, {&src, &dst}, misplaced ? Expect::anything : expectIn(t), src.data(),
          src.step(), t.width, t.height, dst.data(), dst.step(), dstWidth, dstHeight,
          misplaced ? t.pick({-1, dstHeight, top}) : top,
          misplaced ? t.pick({-1, dstWidth}) : left);
  });
}

// a curve through given points
template <class T>
void drive(const Prim& entry, Row<T*, int, int, int, const T*, const T*, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> image(t, Role::write);
    const int count = t.pick({0, 1, 2, 3, 4, 5, 9, 17, 64});
    auto values = list<T>(t, Role::read, std::max(1, count));
    auto levels = list<T>(t, Role::read, std::max(1, count));
    if (!t.oneIn(6)) drawRising(t, levels, count);
    match(entry, t, row, {&image, &values, &levels}, count < 2 ? Expect::anything : expectIn(t),
          image.data(), image.step(), t.width, t.height, values.data(), levels.data(), count);
  });
}

// three planes of one step through a matrix
inline void drive(const Prim& entry, Row<float* const*, int, int, int, const float (*)[4]> row) {
  forTrials(entry, [&](Trial& t) {
    const int padding = t.nextPadding(sizeof(float));
    const Shape shape{t.width, t.height, {}, {}, padding};
    Image<float> r(t, Role::write, shape), g(t, Role::write, shape), b(t, Role::write, shape);
    auto twist = list<float>(t, Role::read, 12);
    const auto matrix = reinterpret_cast<const float(*)[4]>(twist.data());
    float* planes[] = {r.data(), g.data(), b.data()};
    const Images images = {&r, &g, &b, &twist};
    match(entry, t, row, images, expectIn(t), planes, r.step(), t.width, t.height, matrix);
    for (float*& plane : planes) {
      float* const kept = std::exchange(plane, nullptr);
      matchRefusals(images, prim::kStatusNullPtr, "null plane",
                    [&](int c) { return row[c](planes, r.step(), t.width, t.height, matrix); });
      plane = kept;
    }
  });
}

// vectors: in place
template <class T>
void drive(const Prim& entry, Row<T*, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto vector = list<T>(t, Role::write, t.width);
    const bool mayRefuse = entry.has("Win") && t.width < 3;
    match(entry, t, row, {&vector}, mayRefuse ? Expect::anything : Expect::success, vector.data(),
          t.width);
  });
}

// vectors: value and vector
template <class T>
void drive(const Prim& entry, Row<T, T*, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto vector = list<T>(t, Role::write, t.width);
    const T value = t.oneIn(3) ? t.pick({T{0}, T{1}, T{-0.0f}}) : t.value<T>();
    match(entry, t, row, {&vector}, Expect::success, value, vector.data(), t.width);
  });
}

// vectors: source to destination
template <class S, class D>
void drive(const Prim& entry, Row<const S*, D*, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto src = list<S>(t, Role::read, t.width);
    auto dst = list<D>(t, Role::write, t.width);
    match(entry, t, row, {&src, &dst}, Expect::success, src.data(), dst.data(), t.width);
  });
}

// vectors: in place against a level
template <class T>
void drive(const Prim& entry, Row<T*, int, T> row) {
  forTrials(entry, [&](Trial& t) {
    auto vector = list<T>(t, Role::write, t.width);
    match(entry, t, row, {&vector}, Expect::success, vector.data(), t.width, t.value<T>());
  });
}

}  // namespace vx::test
