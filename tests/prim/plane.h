#pragma once

#include <source_location>

#include "prim/prims.h"
#include "tests/support/heap.h"
#include "tests/support/test.h"

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using S16 = std::int16_t;

inline constexpr float kInf = std::numeric_limits<float>::infinity();
inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct Size {
  int width, height;
};

// Test image with a frame of readable pixels around it.
template <class T>
class Plane {
 public:
  Plane(int w, int h, int frame = 0)
      : width(w),
        height(h),
        step((w + 2 * frame) * static_cast<int>(sizeof(T))),
        frame_(frame),
        pixels_(static_cast<std::size_t>((w + 2 * frame) * (h + 2 * frame))) {}

  T* data() { return &at(0, 0); }
  T& at(int x, int y) { return pixels_[index(x, y)]; }
  T at(int x, int y) const { return pixels_[index(x, y)]; }
  Size size(int channels = 1) const { return {width / channels, height}; }

  // value(): the next pixel, in the frame as well
  template <class Value>
  Plane& draw(Value value) {
    for (T& p : pixels_) p = static_cast<T>(value());
    return *this;
  }
  // Whole numbers from low to high: exact in every arithmetic.
  Plane& randomise(std::mt19937& rng, int low, int high) {
    return draw([&] { return std::uniform_int_distribution<int>(low, high)(rng); });
  }
  // value(x, y): the pixel there
  template <class Value>
  Plane& set(Value value) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) at(x, y) = static_cast<T>(value(x, y));
    return *this;
  }

  int width, height, step;

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>((frame_ + y) * (width + 2 * frame_) + frame_ + x);
  }
  int frame_;
  std::vector<T> pixels_;
};

template <class T, class Expected>
void expectPlane(const Plane<T>& dst, Expected expected) {
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < dst.width; ++x)
      ASSERT_EQ(dst.at(x, y), static_cast<T>(expected(x, y))) << "at " << x << ", " << y;
}

// Within `relative` of the expected value and `absolute` more.
template <class Expected>
void expectNear(const Plane<float>& dst, Expected expected, double absolute, double relative) {
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < dst.width; ++x) {
      const double want = expected(x, y);
      ASSERT_NEAR(dst.at(x, y), want, absolute + relative * std::abs(want))
          << "at " << x << ", " << y;
    }
}

// What an argument of call() stands for.
template <class T>
auto operands(T& argument) {
  if constexpr (requires { argument.step; })
    return std::tuple(argument.data(), argument.step);
  else if constexpr (std::is_same_v<const T, const Size>)
    return std::tuple(argument.width, argument.height);
  else if constexpr (requires { argument.data(); })
    return std::tuple(argument.data());
  else
    return std::tuple(argument);
}

inline std::uint32_t bitsOf(float v) { return std::bit_cast<std::uint32_t>(v); }

// Calls a primitive: an image stands for its pointer and step, a size for width and height.
template <class Prim, class... Args>
int call(Prim* prim, Args&&... args) {
  return std::apply(prim, std::tuple_cat(operands(args)...));
}

// Any integer, or a finite float of any sign and of widely different magnitudes.
template <class T>
T drawValue(std::mt19937& rng) {
  if constexpr (std::is_same_v<T, float>)
    return std::ldexp(static_cast<float>(static_cast<int>(rng() >> 8) - (1 << 23)) + 0.5f,
                      static_cast<int>(rng() % 40) - 43);
  else
    return static_cast<T>(rng());
}

// Oracles compute in double and in int.
inline double exact(float v) { return double{v}; }
inline int exact(int v) { return v; }

// Random operands of a primitive that takes one element after the other, and its check.
template <class A, class D = A>
struct Operands {
  explicit Operands(int height = 3) : a(96, height), b(a), d(96, height), before(d) {
    std::mt19937 rng(7);
    a.draw([&] { return drawValue<A>(rng); });
    b.draw([&] { return drawValue<A>(rng); });
    before = d.draw([&] { return drawValue<D>(rng); });
  }

  // Expects success and oracle(a, b, d before, x) in every element of d; puts d back.
  template <class Oracle>
  void expect(int status, Oracle oracle,
              std::source_location where = std::source_location::current()) {
    const ::testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "row");
    EXPECT_EQ(status, 0);
    expectPlane(d, [&](int x, int y) {
      return oracle(exact(a.at(x, y)), exact(b.at(x, y)), exact(before.at(x, y)), x);
    });
    d = before;
  }

  Plane<A> a, b;
  Plane<D> d, before;
};

// A row of a table: the primitive's arguments and what each element becomes, from the
// elements s and t of the sources and v of the destination of Operands o; i counts along the row.
#define VX_EXPECT(expected, prim, ...)                                                    \
  o.expect(call(prim, __VA_ARGS__),                                                       \
           [=]([[maybe_unused]] auto s, [[maybe_unused]] auto t, [[maybe_unused]] auto v, \
               [[maybe_unused]] int i) { return expected; })
