#include "tests/prim/variants/match.h"

#include <algorithm>

#include "prim/float_mode.h"

namespace vx::test {

std::vector<int> bodyColumns() {
  std::vector<int> columns;
  const int last = prim::lastRunnableColumn();
  for (int column = 0; column <= last; ++column)
    if (columns.empty() ||
        std::string_view(prim::columnName(column)) != prim::columnName(columns.back()))
      columns.push_back(column);
  return columns;
}

namespace {

void capture(const Images& images) {
  for (GuardedImage* image : images) image->capture();
}

int callIn(int column, const Images& images, const std::function<int(int)>& call) {
  for (GuardedImage* image : images) image->restore(column);
  const int status = call(column);
  for (std::size_t i = 0; i < images.size(); ++i)
    EXPECT_EQ(images[i]->violation(status < 0), "")
        << "column " << prim::columnName(column) << ", image " << i << ", status " << status;
  return status;
}

}  // namespace

void matchColumns(const std::vector<int>& columns, const Images& images, Expect expect,
                  const std::function<int(int)>& call) {
  capture(images);
  int expectedStatus = 0;
  for (const int column : columns) {
    const int status = callIn(column, images, call);
    if (column == columns.front()) {
      expectedStatus = status;
      for (GuardedImage* image : images) image->keepAsExpected();
      if (expect == Expect::success) {
        EXPECT_GE(status, 0) << prim::columnName(column);
      }
    } else {
      EXPECT_EQ(status, expectedStatus) << "column " << prim::columnName(column);
      for (std::size_t i = 0; i < images.size(); ++i)
        EXPECT_EQ(images[i]->difference(), "")
            << "column " << prim::columnName(column) << ", image " << i;
    }
    if (::testing::Test::HasFailure()) return;
  }
}

void matchRefusals(const Images& images, std::optional<int> status, const char* why,
                   const std::function<int(int)>& call) {
  for (const int column : bodyColumns()) {
    const int got = callIn(column, images, call);
    if (!status) status = got;
    EXPECT_EQ(got, *status) << "column " << prim::columnName(column) << ", " << why;
    if (::testing::Test::HasFailure()) return;
  }
}

ArgumentKind kindOf(const Prim& entry, std::size_t index) {
  std::string_view names = entry.arguments.substr(1, entry.arguments.size() - 2);
  for (; index > 0; --index) names.remove_prefix(names.find(", ") + 2);
  const std::string_view name = names.substr(0, names.find(", "));
  static constexpr std::string_view kSizes[] = {"width",     "height",   "length",    "srcWidth",
                                                "srcHeight", "dstWidth", "dstHeight", "roiWidth",
                                                "roiHeight", "cells"};
  if (std::find(std::begin(kSizes), std::end(kSizes), name) != std::end(kSizes))
    return ArgumentKind::size;
  return name.ends_with("tep") ? ArgumentKind::step : ArgumentKind::other;
}

void forTrials(const Prim& entry, const std::function<void(Trial&)>& body) {
  // Denormals are zero in every body, as they are inside the library's exported functions.
  const prim::FloatModeGuard floatMode;
  for (int number = 0; number < kTrials && !::testing::Test::HasFailure(); ++number) {
    Trial trial(entry, number);
    SCOPED_TRACE(::testing::Message()
                 << "trial " << number << " (seed " << trial.seed() << "): " << trial.width << " x "
                 << trial.height << ", placement " << static_cast<int>(trial.placement)
                 << (trial.packed ? ", packed" : "") << (trial.bottomUp ? ", bottom-up" : "")
                 << ", fill " << static_cast<int>(trial.fill));
    body(trial);
  }
}

}  // namespace vx::test
