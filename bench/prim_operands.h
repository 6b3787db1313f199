#pragma once

// The operands of one primitive, made from the names and types of its arguments: images of a given
// total size with values that every body handles alike, and constants a caller would use.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "prim/grid.h"
#include "prim/jpeg.h"
#include "prim/search.h"
#include "prim/types.h"
#include "tests/prim/variants/prim_info.h"

namespace vx::bench {

/// Memory that one benchmark works on.
struct Level {
  const char* name;
  std::ptrdiff_t bytes;  ///< all operands together
  int rowBytes;          ///< about as many in a row of the widest operand
};

namespace detail {

/// Arguments that address pixels, one image or vector each.
inline constexpr std::string_view kImages[] = {
    "src",        "src1",      "src2",   "dst",    "srcDst",   "mask",    "near",
    "far",        "packed",    "guide",  "column", "fraction", "hue",     "lightness",
    "saturation", "candidate", "target", "best",   "srcU",     "srcV",    "dstU",
    "dstV",       "blur",      "base",   "sign",   "size",     "columns", "coefficients",
    "y",          "cb",        "cr",     "sumR",   "sumG",     "sumB",    "u",
    "v",          "rgb"};
/// Short lists: constants per channel, curves, kernels, results.
inline constexpr std::string_view kLists[] = {
    "value",  "level",  "values", "levels",  "kernel", "sum",  "mean",  "min",    "max",   "indexX",
    "indexY", "result", "hist",   "weights", "low",    "high", "shift", "amount", "least", "gain"};

struct Number {
  std::string_view name;
  int value;
};
// Kernels of five taps, integer ones of three by three; eight segments, as in the tone curves; a
// cubic at three quarters of the size.
inline constexpr Number kNumbers[] = {
    {"roundMode", prim::primRndNear},
    {"scaleFactor", 1},
    {"selector", prim::kCompareLess},
    {"top", 8},
    {"left", 8},
    {"count", 9},
    {"levelCount", 257},
    {"kernelLen", 5},
    {"anchor", 2},
    {"divisor", 16},
    {"kernelWidth", 3},
    {"kernelHeight", 3},
    {"anchorX", 1},
    {"anchorY", 1},
    {"maskWidth", 3},
    {"maskHeight", 3},
    {"roiX", 0},
    {"roiY", 0},
    {"interpolation", 4},
    {"iterations", 1},
    {"hint", 0},
    {"depth", 20},
};
/// Arguments that follow from the size of the images, or that have a type of their own.
inline constexpr std::string_view kOthers[] = {
    "width",       "height",    "length",   "cells",     "srcWidth", "srcHeight",
    "dstWidth",    "dstHeight", "roiWidth", "roiHeight", "step",     "planes",
    "twist",       "xFactor",   "yFactor",  "buffer",    "state",    "axis",
    "rowFraction", "rows",      "blocks",   "quantiser", "search"};

template <class List>
constexpr bool contains(const List& list, std::string_view name) {
  for (const std::string_view known : list)
    if (known == name) return true;
  return false;
}

constexpr bool isStep(std::string_view name) {
  return name.ends_with("Step") && contains(kImages, name.substr(0, name.size() - 4));
}

constexpr std::optional<int> findNumber(std::string_view name) {
  for (const Number& number : kNumbers)
    if (number.name == name) return number.value;
  return std::nullopt;
}

constexpr bool isKnown(std::string_view name) {
  return contains(kImages, name) || contains(kLists, name) || contains(kOthers, name) ||
         isStep(name) || findNumber(name).has_value();
}

template <class T>
constexpr bool isElement = std::is_arithmetic_v<T> || std::is_same_v<T, prim::Complex32f>;

}  // namespace detail

/// A primitive of the list. An argument without a role here is not a constant expression: the
/// benchmark does not compile until it has one.
consteval test::Prim readCall(std::string_view name, std::string_view arguments) {
  for (std::string_view rest = arguments.substr(1); !rest.empty();) {
    const std::size_t end = rest.find_first_of(",)");
    if (!detail::isKnown(rest.substr(0, end))) throw "argument without a role in a benchmark";
    rest.remove_prefix(rest[end] == ')' ? rest.size() : end + 2);
  }
  return test::readPrim(name, arguments);
}

/// What the images of a call are made from.
struct ImageRole {
  std::string_view name;
  int elementBytes;
  bool isFloat, isSigned, isWritten;
};

class Operands {
 public:
  Operands(const test::Prim& entry, const std::vector<ImageRole>& images, const Level& level);
  ~Operands();
  Operands(const Operands&) = delete;
  Operands& operator=(const Operands&) = delete;

  /// The argument of this name; valid as long as the operands.
  template <class T>
  T argument(std::string_view name) {
    if constexpr (std::is_same_v<T, int>) {
      return number(name);
    } else if constexpr (std::is_same_v<T, double>) {
      return kFactor;
    } else if constexpr (std::is_arithmetic_v<T>) {
      return std::is_same_v<T, float> ? T(kMiddle) : static_cast<T>(name == "value" ? 3 : 128);
    } else if constexpr (std::is_same_v<T, void*>) {
      return scratch();
    } else if constexpr (std::is_same_v<T, prim::primDeconvLRState*>) {
      return state();
    } else if constexpr (std::is_same_v<T, const prim::GridAxis*>) {
      return &kAxis;
    } else if constexpr (std::is_same_v<T, float* const*>) {
      return planePointers_;
    } else if constexpr (std::is_same_v<T, const float(*)[4]>) {
      return kTwist;
    } else if constexpr (std::is_same_v<T, const prim::JpegQuantiser*>) {
      return &quantiser();
    } else if constexpr (std::is_same_v<T, const prim::SearchRow*>) {
      return &search_;
    } else if constexpr (std::is_same_v<T, const std::int16_t* const*>) {
      return rowPointers_;
    } else {
      using Element = std::remove_const_t<std::remove_pointer_t<T>>;
      static_assert(std::is_pointer_v<T> && detail::isElement<Element>,
                    "an argument of a new type needs a value here");
      if (isImage(name, std::is_const_v<std::remove_pointer_t<T>>))
        return reinterpret_cast<T>(image(name));
      return static_cast<T>(list<Element>(name));
    }
  }

  /// Bytes that one call reads and writes: the rows of its images, in place counted twice.
  double traffic() const { return traffic_; }
  /// Bytes of all operands.
  double footprint() const { return footprint_; }
  int width() const { return width_; }
  int height() const { return height_; }
  /// Whether a call changes its own source, and with it the values of the next call.
  bool inPlace() const { return inPlace_; }
  /// Puts the values of all in-place images back and leaves them in the cache.
  void restore();

  /// Whether the argument is an image; "packed" and "mask" also name a table and a code.
  static bool isImage(std::string_view name, bool isConst) {
    return detail::contains(detail::kImages, name) && !(name == "packed" && isConst);
  }

 private:
  struct Plane {
    ImageRole role;
    int width, height, frame, pixelBytes;
    std::ptrdiff_t step, bytes;
    std::unique_ptr<unsigned char, void (*)(void*)> memory;
    unsigned char *begin, *origin;
    std::vector<unsigned char> original;
  };

  static constexpr float kMiddle = 0.625f;  ///< of the floats
  static constexpr double kFactor = 0.75;
  static constexpr int kBorder = 8, kFrame = 8, kKernelSize = 5;
  static const prim::GridAxis kAxis;
  static const float kTwist[3][4];
  static const prim::JpegQuantiser& quantiser();

  Plane shape(const ImageRole& role) const;
  std::ptrdiff_t bytesAt(const std::vector<ImageRole>& roles, int width, int height);
  void chooseSize(const std::vector<ImageRole>& roles, const Level& level);
  void place(Plane& plane, int index);
  void fill(Plane& plane) const;
  int number(std::string_view name) const;
  const Plane& plane(std::string_view name) const;
  unsigned char* image(std::string_view name) const { return plane(name).origin; }
  prim::SearchRow searchRow();
  void* scratch();
  prim::primDeconvLRState* state();
  template <class T>
  T* list(std::string_view name);

  const test::Prim entry_;
  int width_ = 0, height_ = 1;
  double traffic_ = 0, footprint_ = 0;
  bool inPlace_ = false;
  std::vector<Plane> planes_;
  float* planePointers_[3] = {};
  const std::int16_t* rowPointers_[8] = {};
  prim::SearchRow search_{};
  std::vector<std::unique_ptr<std::vector<unsigned char>>> lists_;
  std::vector<unsigned char> scratch_;
  prim::primDeconvLRState* state_ = nullptr;
};

/// Constants rise, so that curves and histograms have segments; kernels have weights 1 2 1 or
/// 1 4 6 4 1.
template <class T>
T* Operands::list(std::string_view name) {
  constexpr int kLength = 4096;
  lists_.push_back(std::make_unique<std::vector<unsigned char>>(kLength * sizeof(T)));
  T* const values = reinterpret_cast<T*>(lists_.back()->data());
  if constexpr (std::is_arithmetic_v<T>) {
    static constexpr int kRow[] = {1, 4, 6, 4, 1}, kSquare[] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
    const bool isSquare = entry_.has("Filter_8u");
    for (int i = 0; i < kLength; ++i) {
      if (name == "kernel")
        values[i] = static_cast<T>(isSquare ? kSquare[i % 9] : kRow[i % 5]);
      else if (name == "levels" && std::is_integral_v<T>)
        values[i] = static_cast<T>(250 * (i - 128));
      else if (name == "levels" || name == "values")
        values[i] = static_cast<T>(0.2 + 0.11 * i);
      else
        values[i] = std::is_same_v<T, float> ? static_cast<T>(kMiddle) : static_cast<T>(128);
    }
  }
  return values;
}

}  // namespace vx::bench
