#pragma once

#include <gtest/gtest.h>

#include "prim/dispatch.h"

namespace vx::test {

/// Runs `body` once with each column of the dispatch table from `first` on that this machine runs.
template <class Body>
void onEveryVariant(const Body& body, int first = 0) {
  const int chosen = prim::primCpuColumn;
  for (int column = first; column <= prim::lastRunnableColumn(); ++column) {
    prim::primCpuColumn = column;
    SCOPED_TRACE(prim::columnName(column));
    body();
  }
  prim::primCpuColumn = chosen;
}

}  // namespace vx::test
