#pragma once

#include <algorithm>
#include <string_view>

#include "prim/types.h"
#include "tests/prim/variants/guarded_image.h"

namespace vx::test {

/// What a primitive's name and argument names tell about its calls.
struct Prim {
  std::string_view name;
  std::string_view arguments;  ///< "(src, srcStep, ...)"
  Pixels source, destination;
  bool checksSteps = false;  ///< refuses a step below 1; others take any
  // Answers to a step shorter than its row and to one that is no multiple of its floats; 0:
  // allowed.
  int shortStep = 0, unevenStep = 0;

  constexpr bool has(std::string_view part) const {
    return name.find(part) != std::string_view::npos;
  }
  /// Whether one of the arguments begins so.
  constexpr bool takes(std::string_view part) const {
    return arguments.find(part) != std::string_view::npos;
  }
  /// Name of an argument; empty behind the last.
  constexpr std::string_view argument(std::size_t index) const {
    std::string_view names = arguments.substr(1, arguments.size() - 2);
    for (; index > 0 && !names.empty(); --index)
      names.remove_prefix(std::min(names.size(), names.find(", ") + 2));
    return names.substr(0, names.find(", "));
  }
};

namespace detail {

struct LayoutCode {
  std::string_view text;
  Pixels source, destination;
};

// The last four are the one-dimensional forms.
inline constexpr LayoutCode kLayoutCodes[] = {
    {"C1R", {1, 1}, {1, 1}},    {"C1IR", {1, 1}, {1, 1}},    {"C1MR", {1, 1}, {1, 1}},
    {"C1RSfs", {1, 1}, {1, 1}}, {"C1IRSfs", {1, 1}, {1, 1}}, {"P3IR", {1, 1}, {1, 1}},
    {"C3R", {3, 3}, {3, 3}},    {"C3IR", {3, 3}, {3, 3}},    {"AC4IR", {4, 3}, {4, 3}},
    {"C3C1R", {3, 1}, {1, 1}},  {"C4C1R", {4, 1}, {1, 1}},   {"C1C3R", {1, 1}, {3, 1}},
    {"C1C4R", {1, 1}, {4, 1}},  {"C3P3R", {3, 3}, {1, 1}},   {"P3C3R", {1, 1}, {3, 3}},
    {"32f", {1, 1}, {1, 1}},    {"32s", {1, 1}, {1, 1}},     {"32f8u", {1, 1}, {1, 1}},
    {"32fc", {1, 1}, {1, 1}},   {"8u", {1, 1}, {1, 1}},      {"8u16u", {1, 1}, {1, 1}},
    {"8u16s", {1, 1}, {1, 1}},  {"16s", {1, 1}, {1, 1}},     {"16s8u", {1, 1}, {1, 1}},
    {"I", {1, 1}, {1, 1}}};

}  // namespace detail

/// Reads a name of the list. An unknown layout is not a constant expression: it does not compile.
consteval Prim readPrim(std::string_view name, std::string_view arguments) {
  Prim result{name, arguments, {}, {}};
  const std::string_view layout = name.substr(name.rfind('_') + 1);
  bool known = false;
  for (const auto& code : detail::kLayoutCodes)
    if (code.text == layout) {
      result.source = code.source;
      result.destination = code.destination;
      known = true;
    }
  if (!known) throw "unknown layout code";
  const auto isOneOf = [name](auto... starts) { return (name.starts_with(starts) || ...); };
  if (isOneOf("primDilate", "primErode"))
    result.shortStep = prim::kStatusShortStep;
  else if (isOneOf("primAbsDiff_32f", "primAddProduct", "primTranspose", "primFilter", "primPyr",
                   "primResize", "primDeconv", "primSearch"))
    result.shortStep = prim::kStatusBadStep;
  if (isOneOf("primPyr", "primDeconv")) result.unevenStep = prim::kStatusUnevenStep;
  if (isOneOf("primAddProduct")) result.unevenStep = prim::kStatusBadStep;
  result.checksSteps =
      result.shortStep != 0 || isOneOf("primCompare", "primConvert", "primColorTwist",
                                       "primCopyReplicate", "primNormDiff", "primWin");
  return result;
}

}  // namespace vx::test
