#pragma once

// The driver of every primitive. Most arguments follow from their types and names: images with
// their steps, width and height, lists and values. A plan says what does not.

#include <tuple>

#include "tests/prim/variants/plans.h"

namespace vx::test {

/// Makes the arguments of one call, from the first to the last.
struct Operands {
  const Prim& entry;
  Trial& t;
  const Plan& plan;
  std::vector<std::unique_ptr<GuardedImage>> owned{};
  Images images{};
  float* planes[3] = {};
  const std::int16_t* rows[8] = {};
  std::vector<RowSize> rowSizes{};  ///< of the steps among the arguments
  prim::SearchRow search{};
  std::size_t next = 0;

  template <class E>
  E* make(std::string_view name, Role role, const Shape& shape) {
    auto* image = new Image<E>(t, role, shape);
    owned.emplace_back(image);
    images.push_back(image);
    const auto given = plan.elements.find(name);
    if constexpr (std::is_arithmetic_v<E>) {
      for (int x = 0; x < shape.width && given != plan.elements.end(); ++x)
        image->set(x, 0, static_cast<E>(given->second(x)));
      for (int i = 0; i < shape.width * shape.height && name == "mask"; ++i)
        image->set(i % shape.width, i / shape.width, t.pick<E>({0, 0, 1, 128, 255}));
    }
    return image->data();
  }

  template <class T>
  T argument() {
    const std::size_t i = next++;
    const std::string_view name = entry.argument(i);
    rowSizes.push_back(name.ends_with("tep") ? images.back()->rowSize(plan.reach) : RowSize{});
    if constexpr (std::is_same_v<T, float* const*>) {  // three planes of one step
      const int padding = t.nextPadding(sizeof(float));
      for (float*& plane : planes)
        plane = make<float>(name, Role::write, {t.width, t.height, {}, {}, padding});
      return planes;
    } else if constexpr (std::is_same_v<T, const std::int16_t* const*>) {
      for (auto& row : rows) row = make<std::int16_t>(name, Role::read, listOf(t.width));
      return rows;
    } else if constexpr (std::is_same_v<T, const prim::SearchRow*>) {
      const Shape wide{t.width, t.height, {}, {0, 0, plan.reach, 0}}, own{t.width, t.height};
      const auto plane = [&](Role role, const Shape& shape) {
        return make<float>(name, role, shape);
      };
      const auto step = [&] { return images.back()->step(); };
      search = {.candidate = plane(Role::read, wide),
                .candidateStep = step(),
                .target = plane(Role::read, own),
                .targetStep = step(),
                .weights = plane(Role::read, listOf(plan.reach + 1)),
                .count = plan.setting,
                .best = plane(Role::write, own),
                .bestStep = step(),
                .srcU = plane(Role::read, wide),
                .srcUStep = step(),
                .srcV = plane(Role::read, wide),
                .srcVStep = step(),
                .dstU = plane(Role::write, own),
                .dstUStep = step(),
                .dstV = plane(Role::write, own),
                .dstVStep = step()};
      return &search;
    } else if constexpr (std::is_same_v<T, const float(*)[4]>) {
      return reinterpret_cast<T>(make<float>(name, Role::read, listOf(12)));
    } else if constexpr (std::is_same_v<T, void*>) {
      return make<std::uint8_t>(name, Role::scratch, plan.shapes.at(name));
    } else if constexpr (std::is_pointer_v<T>) {
      using E = std::remove_const_t<std::remove_pointer_t<T>>;
      constexpr bool kConst = std::is_const_v<std::remove_pointer_t<T>>;
      if constexpr (std::is_same_v<E, prim::GridAxis> || std::is_same_v<E, prim::JpegQuantiser> ||
                    std::is_same_v<E, prim::primDeconvLRState>) {
        return static_cast<T>(plan.objects.at(name).get());
      } else {
        if (plan.ontoSource && name == "dst") return static_cast<Image<E>*>(images.front())->data();
        const Pixels pixels = kConst ? entry.source : entry.destination;
        const int length = entry.takes("length") ? t.width : kConst ? pixels.used : 1;
        const auto given = plan.shapes.find(name);
        const bool written = !kConst || (plan.ontoSource && images.empty());
        return make<E>(name, written ? Role::write : Role::read,
                       given != plan.shapes.end() ? given->second
                       : !entry.argument(i + 1).ends_with("tep")
                           ? listOf(length)
                           : Shape{t.width, t.height, pixels, kConst ? plan.frame : Frame{}});
      }
    } else if (const auto given = plan.numbers.find(name); given != plan.numbers.end()) {
      return static_cast<T>(given->second);
    } else if constexpr (std::is_same_v<T, int>) {
      return name.ends_with("tep")                 ? images.back()->step()
             : name == "width" || name == "length" ? t.width
             : name == "height"                    ? t.height
                                                   : plan.setting;
    } else {
      return t.oneIn(3) ? t.pick({T(0), T(1), T(-0.0f)}) : t.value<T>();
    }
  }
};

/// @param row  of the dispatch table
template <class... Args>
void drive(const Prim& entry, int (*const (&row)[prim::kColumnCount])(Args...)) {
  forTrials(entry, [&](Trial& t) {
    const Plan plan = planOf(entry, t);
    Operands operands{entry, t, plan};
    std::tuple<Args...> args{operands.argument<Args>()...};
    const auto arguments =
        std::apply([](auto&... all) { return std::vector{argumentOf(all)...}; }, args);
    match(entry, t, operands.images, plan.expected, operands.rowSizes, arguments,
          [&](int column) { return std::apply(row[column], args); });
  });
}

}  // namespace vx::test
