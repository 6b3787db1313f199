#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "prim/dispatch.h"
#include "tests/prim/variants/trial.h"

namespace vx::test {

/// A row of the dispatch table for primitives with the parameters Args.
template <class... Args>
using Row = int (*const (&)[prim::kColumnCount])(Args...);

using Images = std::vector<GuardedImage*>;

/// Outcome that a trial's arguments ask for, in column 0. All columns agree in any case.
enum class Expect {
  success,  ///< 0 or a warning
  anything  ///< the arguments may be refused
};

inline Expect expectIn(const Trial& trial) {
  return trial.bottomUp ? Expect::anything : Expect::success;
}

/// Columns of the table that this machine runs, one for each body.
std::vector<int> bodyColumns();

/// Runs `call` in all of `columns` and compares status and every image with those of the first.
/// A call that refuses must leave all images as they were.
void matchColumns(const std::vector<int>& columns, const Images& images, Expect expect,
                  const std::function<int(int column)>& call);

/// Runs `call` in all columns; it must return `status` (where given; else alike) and, refusing,
/// write nothing.
void matchRefusals(const Images& images, std::optional<int> status, const char* why,
                   const std::function<int(int column)>& call);

/// Status that a bad value of the argument must give: its kind follows from its name.
enum class ArgumentKind { size, step, other };
ArgumentKind kindOf(const Prim& entry, std::size_t index);

namespace detail {

template <std::size_t i, class... Args>
void refuseOne(const Prim& entry, const Images& images, Row<Args...> row,
               const std::tuple<Args...>& good) {
  const auto with = [&](auto bad, std::optional<int> status, const char* why) {
    std::tuple<Args...> args = good;
    std::get<i>(args) = bad;
    SCOPED_TRACE(::testing::Message() << "argument " << i << " of " << entry.arguments);
    matchRefusals(images, status, why, [&](int column) { return std::apply(row[column], args); });
  };
  using T = std::tuple_element_t<i, std::tuple<Args...>>;
  if constexpr (std::is_pointer_v<T>) {
    with(nullptr, prim::kStatusNullPtr, "null pointer");
  } else if constexpr (std::is_same_v<T, int>) {
    const ArgumentKind kind = kindOf(entry, i);
    if (kind == ArgumentKind::size) {
      with(0, prim::kStatusBadSize, "size 0");
      with(-3, prim::kStatusBadSize, "negative size");
    } else if (kind == ArgumentKind::step) {
      with(0, std::nullopt, "step 0");
    }
  }
}

}  // namespace detail

/// Null pointers, sizes below 1 and a step of 0, one argument after the other.
template <class... Args>
void matchBadArguments(const Prim& entry, const Images& images, Row<Args...> row,
                       const std::tuple<std::type_identity_t<Args>...>& good) {
  [&]<std::size_t... i>(std::index_sequence<i...>) {
    (detail::refuseOne<i, Args...>(entry, images, row, good), ...);
  }
  (std::index_sequence_for<Args...>());
}

/// One trial: the call in every column and, now and then, with each argument made bad.
template <class... Args>
void match(const Prim& entry, const Trial& trial, Row<Args...> row, const Images& images,
           Expect expect, std::type_identity_t<Args>... args) {
  matchColumns(bodyColumns(), images, expect, [&](int column) { return row[column](args...); });
  if (trial.number() % 23 == 0) matchBadArguments<Args...>(entry, images, row, std::tuple{args...});
}

/// Calls body(trial) for every trial until one fails.
void forTrials(const Prim& entry, const std::function<void(Trial&)>& body);

}  // namespace vx::test
