#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <utility>

#include "prim/dispatch.h"
#include "prim/float_mode.h"
#include "prim/search.h"
#include "tests/prim/variants/trial.h"

namespace vx::test {

/// A row of the dispatch table for primitives with the parameters Args.
template <class... Args>
using Row = int (*const (&)[prim::kColumnCount])(Args...);

using Images = std::vector<GuardedImage*>;

/// Columns of the table that this machine runs, one for each body.
inline std::vector<int> bodyColumns() {
  std::vector<int> columns;
  for (int column = 0; column <= prim::lastRunnableColumn(); ++column)
    if (columns.empty() ||
        std::string_view(prim::columnName(column)) != prim::columnName(columns.back()))
      columns.push_back(column);
  return columns;
}

/// Runs `call` in all of `columns` and compares status and every image with those of the first,
/// whose status it returns: `expected`, or a warning in place of 0. A call that refuses must leave
/// all images as they were.
inline int matchColumns(const std::vector<int>& columns, const Images& images, int expected,
                        const std::function<int(int)>& call) {
  for (GuardedImage* image : images) image->capture();
  int first = 0;
  for (std::size_t c = 0; c < columns.size() && !::testing::Test::HasFailure(); ++c) {
    SCOPED_TRACE(prim::columnName(columns[c]));
    for (GuardedImage* image : images) image->restore(columns[c]);
    const int status = call(columns[c]);
    if (c == 0) first = status;
    EXPECT_EQ(status, first);
    EXPECT_EQ(std::min(status, 0), expected);
    for (std::size_t i = 0; i < images.size(); ++i) {
      EXPECT_EQ(images[i]->violation(status < 0), "") << "image " << i << ", status " << status;
      if (c == 0) images[i]->keepAsExpected();
      EXPECT_EQ(images[i]->difference(), "") << "image " << i;
    }
  }
  return first;
}

/// What an argument is, in the order in which arguments are checked.
enum class ArgumentKind { pointer, size, step, other };
inline ArgumentKind kindOf(const Prim& entry, std::size_t index) {
  const std::string_view name = entry.argument(index);
  for (const std::string_view size : {"idth", "eight", "length", "kernelLen", "cells", "blocks"})
    if (name.ends_with(size) && !name.starts_with("mask")) return ArgumentKind::size;
  return name.ends_with("tep") ? ArgumentKind::step : ArgumentKind::other;
}

/// Argument i made bad, if there is a way; what is checked after it is wrong as well.
/// @param rowSize  of a step: what a row of the image holds that the primitive reads or writes
template <std::size_t i, class... Args>
void refuseOne(const Prim& entry, const Images& images, Row<Args...> row,
               const std::tuple<Args...>& good, RowSize rowSize) {
  using T = std::tuple_element_t<i, std::tuple<Args...>>;
  const auto with = [&](ArgumentKind kind, T bad, int status) {
    SCOPED_TRACE(::testing::Message() << "bad argument " << i << " of " << entry.arguments);
    std::tuple<Args...> args = good;
    auto zeroIfLater = [&, at = std::size_t{0}](auto& argument) mutable {
      const ArgumentKind own = kindOf(entry, at++);
      if constexpr (std::is_same_v<decltype(argument), int&>)
        if (own > kind && own != ArgumentKind::other) argument = 0;
    };
    std::apply([&](auto&... all) { (zeroIfLater(all), ...); }, args);
    std::get<i>(args) = bad;
    const auto call = [&](int column) { return std::apply(row[column], args); };
    matchColumns(bodyColumns(), images, status, call);
  };
  if constexpr (std::is_same_v<T, const prim::SearchRow*>) {
    using Search = prim::SearchRow;
    const Search search = *std::get<i>(good);
    const auto withField = [&](auto field, auto bad, ArgumentKind kind, int status) {
      Search changed = search;
      changed.*field = bad;
      with(kind, &changed, status);
    };
    for (const auto field :
         {&Search::candidate, &Search::target, &Search::weights, &Search::srcU, &Search::srcV})
      withField(field, nullptr, ArgumentKind::pointer, prim::kStatusNullPtr);
    for (const auto field : {&Search::best, &Search::dstU, &Search::dstV})
      withField(field, nullptr, ArgumentKind::pointer, prim::kStatusNullPtr);
    withField(&Search::count, 0, ArgumentKind::size, prim::kStatusBadSize);
    const int rowBytes = 4 * std::get<i + 1>(good), reach = 4 * (search.count - 1);
    for (const auto field :
         {&Search::targetStep, &Search::bestStep, &Search::dstUStep, &Search::dstVStep})
      withField(field, rowBytes - 1, ArgumentKind::step, prim::kStatusBadStep);
    for (const auto field : {&Search::candidateStep, &Search::srcUStep, &Search::srcVStep})
      withField(field, rowBytes + reach - 1, ArgumentKind::step, prim::kStatusBadStep);
  }
  if constexpr (std::is_pointer_v<T>) {
    with(ArgumentKind::pointer, nullptr, prim::kStatusNullPtr);
  } else if constexpr (std::is_same_v<T, int>) {
    const ArgumentKind kind = kindOf(entry, i);
    for (const int bad : {0, -3}) {
      if (kind == ArgumentKind::size) with(kind, bad, prim::kStatusBadSize);
      if (kind == ArgumentKind::step && entry.checksSteps) with(kind, bad, prim::kStatusBadStep);
    }
    if (kind != ArgumentKind::step) return;
    if (entry.shortStep != 0) with(kind, rowSize.bytes - 1, entry.shortStep);
    if (entry.unevenStep != 0 && rowSize.elementBytes == sizeof(float))
      with(kind, rowSize.bytes + 1, entry.unevenStep);
  }
}

/// One trial: the call in every column, apart from each other where the generic body has another
/// result than all others, and now and then with each argument made bad: null pointers, sizes below
/// 1 and, where they are checked, steps below 1, shorter than their rows and uneven.
template <class... Args>
void match(const Prim& entry, const Trial& trial, Row<Args...> row, const Images& images,
           int expected, const std::tuple<Args...>& args, const std::vector<RowSize>& rowSizes) {
  const auto call = [&](int column) { return std::apply(row[column], args); };
  std::vector<int> columns = bodyColumns();
  if (entry.has("Sum_32f") || entry.has("Mean_32f")) {
    matchColumns({0}, images, expected, call);
    columns.erase(columns.begin());
  }
  const int status = matchColumns(columns, images, expected, call);
  if (trial.number % 23 != 0 || status == prim::kStatusBadSize || status == prim::kStatusBadStep)
    return;
  [&]<std::size_t... i>(std::index_sequence<i...>) {
    (refuseOne<i, Args...>(entry, images, row, args, rowSizes[i]), ...);
  }
  (std::index_sequence_for<Args...>());
}

/// Calls body(trial) for every trial until one fails.
template <class Body>
void forTrials(const Prim& entry, Body body) {
  // Denormals are zero in every body, as they are inside the library's exported functions.
  const prim::FloatModeGuard floatMode;
  for (int number = 0; number < kTrials && !::testing::Test::HasFailure(); ++number) {
    Trial t(entry, number);
    SCOPED_TRACE(::testing::Message()
                 << "trial " << number << " (seed " << t.seed << "): " << t.width << " x "
                 << t.height << ", placement " << static_cast<int>(t.placement)
                 << (t.packed ? ", packed" : "") << (t.bottomUp ? ", bottom-up" : "") << ", fill "
                 << static_cast<int>(t.fill));
    body(t);
  }
}

}  // namespace vx::test
