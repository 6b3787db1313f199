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

static int callIn(int column, const Images& images, const std::function<int(int)>& call) {
  for (GuardedImage* image : images) image->restore(column);
  const int status = call(column);
  for (std::size_t i = 0; i < images.size(); ++i)
    EXPECT_EQ(images[i]->violation(status < 0), "")
        << "column " << prim::columnName(column) << ", image " << i << ", status " << status;
  return status;
}

int matchColumns(const std::vector<int>& columns, const Images& images, Expect expect,
                 const std::function<int(int)>& call) {
  for (GuardedImage* image : images) image->capture();
  const int first = callIn(columns.front(), images, call);
  for (GuardedImage* image : images) image->keepAsExpected();
  EXPECT_TRUE(expect == Expect::anything ||
              (expect == Expect::success ? first >= 0 : first == prim::kStatusBadStep))
      << first;
  for (std::size_t c = 1; c < columns.size() && !::testing::Test::HasFailure(); ++c) {
    EXPECT_EQ(callIn(columns[c], images, call), first) << prim::columnName(columns[c]);
    for (std::size_t i = 0; i < images.size(); ++i)
      EXPECT_EQ(images[i]->difference(), "")
          << "column " << prim::columnName(columns[c]) << ", image " << i;
  }
  return first;
}

void matchRefusals(const Images& images, int status, const std::function<int(int)>& call) {
  for (const int column : bodyColumns()) {
    EXPECT_EQ(callIn(column, images, call), status) << "column " << prim::columnName(column);
    if (::testing::Test::HasFailure()) return;
  }
}

ArgumentKind kindOf(const Prim& entry, std::size_t index) {
  static constexpr std::string_view kSizes[] = {"width",     "height",   "length",    "srcWidth",
                                                "srcHeight", "dstWidth", "dstHeight", "roiWidth",
                                                "roiHeight", "cells",    "blocks"};
  const std::string_view name = entry.argument(index);
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
