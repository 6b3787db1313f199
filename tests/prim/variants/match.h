#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <utility>

#include "prim/dispatch.h"
#include "prim/float_mode.h"
#include "prim/search.h"
#include "tests/prim/variants/trial.h"

namespace vx::test {

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

/// One argument of a call, of whatever type: where it stands, and what may be put there.
struct Argument {
  enum class Type { pointer, integer, search, other };
  Type type;
  void* address;

  template <class T>
  T get() const {
    T value;
    std::memcpy(&value, address, sizeof value);
    return value;
  }
  template <class T>
  void put(T value) const {
    std::memcpy(address, &value, sizeof value);
  }
};

template <class T>
Argument argumentOf(T& value) {
  return {std::is_same_v<T, const prim::SearchRow*> ? Argument::Type::search
          : std::is_pointer_v<T>                    ? Argument::Type::pointer
          : std::is_same_v<T, int>                  ? Argument::Type::integer
                                                    : Argument::Type::other,
          &value};
}

/// Calls with arguments made bad one by one. The types of the arguments are gone here, so that this
/// is compiled once and not for every primitive.
class Refusals {
 public:
  Refusals(const Prim& entry, const Images& images, const std::vector<RowSize>& rowSizes,
           const std::vector<Argument>& arguments, const std::function<int(int)>& call)
      : entry_(entry), images_(images), rowSizes_(rowSizes), arguments_(arguments), call_(call) {}

  void all() const {
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
      const Argument::Type type = arguments_[i].type;
      if (type == Argument::Type::integer) ofInteger(i);
      if (type == Argument::Type::search) ofSearchRow(i);
      if (type == Argument::Type::search || type == Argument::Type::pointer)
        with(i, ArgumentKind::pointer, static_cast<void*>(nullptr), prim::kStatusNullPtr);
    }
  }

 private:
  /// Argument i is `bad`, and what is checked after it is wrong as well.
  template <class T>
  void with(std::size_t i, ArgumentKind kind, T bad, int status) const {
    SCOPED_TRACE(::testing::Message() << "bad argument " << i << " of " << entry_.arguments);
    std::vector<std::pair<Argument, int>> good;
    for (std::size_t at = 0; at < arguments_.size(); ++at) {
      const ArgumentKind own = kindOf(entry_, at);
      if (arguments_[at].type != Argument::Type::integer || own <= kind ||
          own == ArgumentKind::other)
        continue;
      good.emplace_back(arguments_[at], arguments_[at].get<int>());
      arguments_[at].put(0);
    }
    const T own = arguments_[i].get<T>();
    arguments_[i].put(bad);
    matchColumns(bodyColumns(), images_, status, call_);
    arguments_[i].put(own);
    for (const auto& [argument, value] : good) argument.put(value);
  }

  void ofInteger(std::size_t i) const {
    const ArgumentKind kind = kindOf(entry_, i);
    for (const int bad : {0, -3}) {
      if (kind == ArgumentKind::size) with(i, kind, bad, prim::kStatusBadSize);
      if (kind == ArgumentKind::step && entry_.checksSteps)
        with(i, kind, bad, prim::kStatusBadStep);
    }
    if (kind != ArgumentKind::step) return;
    const RowSize rowSize = rowSizes_[i];
    if (entry_.shortStep != 0) with(i, kind, rowSize.bytes - 1, entry_.shortStep);
    if (entry_.unevenStep != 0 && rowSize.elementBytes == sizeof(float))
      with(i, kind, rowSize.bytes + 1, entry_.unevenStep);
  }

  void ofSearchRow(std::size_t i) const {
    using Search = prim::SearchRow;
    const auto* given = arguments_[i].get<const Search*>();
    const auto withField = [&](auto field, auto bad, ArgumentKind kind, int status) {
      Search changed = *given;
      changed.*field = bad;
      with(i, kind, static_cast<const Search*>(&changed), status);
    };
    for (const auto field :
         {&Search::candidate, &Search::target, &Search::weights, &Search::srcU, &Search::srcV})
      withField(field, nullptr, ArgumentKind::pointer, prim::kStatusNullPtr);
    for (const auto field : {&Search::best, &Search::dstU, &Search::dstV})
      withField(field, nullptr, ArgumentKind::pointer, prim::kStatusNullPtr);
    withField(&Search::count, 0, ArgumentKind::size, prim::kStatusBadSize);
    const int rowBytes = 4 * arguments_[i + 1].get<int>(), reach = 4 * (given->count - 1);
    for (const auto field :
         {&Search::targetStep, &Search::bestStep, &Search::dstUStep, &Search::dstVStep})
      withField(field, rowBytes - 1, ArgumentKind::step, prim::kStatusBadStep);
    for (const auto field : {&Search::candidateStep, &Search::srcUStep, &Search::srcVStep})
      withField(field, rowBytes + reach - 1, ArgumentKind::step, prim::kStatusBadStep);
  }

  const Prim& entry_;
  const Images& images_;
  const std::vector<RowSize>& rowSizes_;
  const std::vector<Argument>& arguments_;
  const std::function<int(int)>& call_;
};

/// One trial: the call in every column, apart from each other where the generic body has another
/// result than all others, and now and then with each argument made bad: null pointers, sizes below
/// 1 and, where they are checked, steps below 1, shorter than their rows and uneven.
inline void match(const Prim& entry, const Trial& trial, const Images& images, int expected,
                  const std::vector<RowSize>& rowSizes, const std::vector<Argument>& arguments,
                  const std::function<int(int)>& call) {
  std::vector<int> columns = bodyColumns();
  if (entry.has("Sum_32f") || entry.has("Mean_32f")) {
    matchColumns({0}, images, expected, call);
    columns.erase(columns.begin());
  }
  const int status = matchColumns(columns, images, expected, call);
  if (trial.number % 23 != 0 || status == prim::kStatusBadSize || status == prim::kStatusBadStep)
    return;
  Refusals(entry, images, rowSizes, arguments, call).all();
}

/// Calls body(trial) for every trial until one fails.
inline void forTrials(const Prim& entry, const std::function<void(Trial&)>& body) {
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
