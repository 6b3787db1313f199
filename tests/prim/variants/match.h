#pragma once

#include <gtest/gtest.h>

#include <functional>
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
  badStep,  ///< refused for its negative steps
  anything  ///< the arguments may be refused
};

inline Expect expectIn(const Prim& entry, const Trial& trial) {
  return trial.bottomUp && entry.checksSteps ? Expect::badStep : Expect::success;
}

/// Columns of the table that this machine runs, one for each body.
std::vector<int> bodyColumns();

/// Runs `call` in all of `columns` and compares status and every image with those of the first,
/// whose status it returns. A call that refuses must leave all images as they were.
int matchColumns(const std::vector<int>& columns, const Images& images, Expect expect,
                 const std::function<int(int column)>& call);

/// Runs `call` in all columns; it must return `status` and, refusing, write nothing.
void matchRefusals(const Images& images, int status, const std::function<int(int column)>& call);

/// What an argument is, in the order in which arguments are checked.
enum class ArgumentKind { pointer, size, step, other };
ArgumentKind kindOf(const Prim& entry, std::size_t index);

namespace detail {

/// Sets the sizes and steps to 0 that are checked later than an argument of the given kind.
template <class... Args>
void spoilAfter(ArgumentKind checked, const Prim& entry, std::tuple<Args...>& args) {
  auto spoil = [&, i = std::size_t{0}](auto& argument) mutable {
    const ArgumentKind kind = kindOf(entry, i++);
    if constexpr (std::is_same_v<decltype(argument), int&>)
      if (kind > checked && kind != ArgumentKind::other) argument = 0;
  };
  std::apply([&](auto&... all) { (spoil(all), ...); }, args);
}

template <std::size_t i, class... Args>
void refuseOne(const Prim& entry, const Images& images, Row<Args...> row,
               const std::tuple<Args...>& good) {
  const auto with = [&](ArgumentKind kind, auto bad, int status) {
    std::tuple<Args...> args = good;
    spoilAfter(kind, entry, args);
    std::get<i>(args) = bad;
    SCOPED_TRACE(::testing::Message() << "bad argument " << i << " of " << entry.arguments);
    matchRefusals(images, status, [&](int column) { return std::apply(row[column], args); });
  };
  using T = std::tuple_element_t<i, std::tuple<Args...>>;
  if constexpr (std::is_pointer_v<T>) {
    with(ArgumentKind::pointer, nullptr, prim::kStatusNullPtr);
  } else if constexpr (std::is_same_v<T, int>) {
    const ArgumentKind kind = kindOf(entry, i);
    for (const int bad : {0, -3}) {
      if (kind == ArgumentKind::size) with(kind, bad, prim::kStatusBadSize);
      if (kind == ArgumentKind::step && entry.checksSteps) with(kind, bad, prim::kStatusBadStep);
    }
  }
}

}  // namespace detail

/// Null pointers, sizes below 1 and, where they are checked, steps below 1, one argument after the
/// other; with each of them all is wrong that is checked after it.
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
  const int status =
      matchColumns(bodyColumns(), images, expect, [&](int column) { return row[column](args...); });
  if (trial.number() % 23 == 0 && status >= 0)
    matchBadArguments<Args...>(entry, images, row, std::tuple{args...});
}

/// Calls body(trial) for every trial until one fails.
void forTrials(const Prim& entry, const std::function<void(Trial&)>& body);

}  // namespace vx::test
