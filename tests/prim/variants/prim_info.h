#pragma once

#include <array>
#include <string_view>

#include "tests/prim/variants/guarded_image.h"

namespace vx::test {

/// What the integer behind width and height means.
enum class Setting { none, roundMode, scaleFactor, selector, mask };

/// What a primitive's name and argument names tell about its calls.
struct Prim {
  std::string_view name;
  std::string_view arguments;  ///< "(src, srcStep, ...)"
  Pixels source, destination;
  Setting setting = Setting::none;

  constexpr bool has(std::string_view part) const {
    return name.find(part) != std::string_view::npos;
  }
};

namespace detail {

struct LayoutCode {
  std::string_view text;
  Pixels source, destination;
};

inline constexpr auto kLayoutCodes = std::to_array<LayoutCode>({
    {"C1R", {1, 1}, {1, 1}},
    {"C1IR", {1, 1}, {1, 1}},
    {"C1MR", {1, 1}, {1, 1}},
    {"C1RSfs", {1, 1}, {1, 1}},
    {"C1IRSfs", {1, 1}, {1, 1}},
    {"P3IR", {1, 1}, {1, 1}},
    {"C3R", {3, 3}, {3, 3}},
    {"C3IR", {3, 3}, {3, 3}},
    {"AC4IR", {4, 3}, {4, 3}},
    {"C3C1R", {3, 1}, {1, 1}},
    {"C4C1R", {4, 1}, {1, 1}},
    {"C1C3R", {1, 1}, {3, 1}},
    {"C1C4R", {1, 1}, {4, 1}},
    {"C3P3R", {3, 3}, {1, 1}},
    {"P3C3R", {1, 1}, {3, 3}},
    // the one-dimensional forms
    {"32f", {1, 1}, {1, 1}},
    {"32f8u", {1, 1}, {1, 1}},
    {"32fc", {1, 1}, {1, 1}},
    {"I", {1, 1}, {1, 1}},
});

}  // namespace detail

/// Reads a name of the list. An unknown layout is not a constant expression: it does not compile.
consteval Prim readPrim(std::string_view name, std::string_view arguments) {
  Prim prim{name, arguments, {}, {}};
  const std::string_view layout = name.substr(name.rfind('_') + 1);
  bool known = false;
  for (const auto& code : detail::kLayoutCodes)
    if (code.text == layout) {
      prim.source = code.source;
      prim.destination = code.destination;
      known = true;
    }
  if (!known) throw "unknown layout code";
  if (layout.ends_with("Sfs")) prim.setting = Setting::scaleFactor;
  if (name.starts_with("primConvert_32f")) prim.setting = Setting::roundMode;
  if (name.starts_with("primCompare")) prim.setting = Setting::selector;
  if (name.starts_with("primFilter")) prim.setting = Setting::mask;
  return prim;
}

}  // namespace vx::test
