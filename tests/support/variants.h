#pragma once

#include "prim/dispatch.h"
#include "tests/support/test.h"

namespace vx::test {

/// Runs `body` with each column of the dispatch table from `first` on that this machine runs, once
/// for columns that name the same bodies.
template <class Body>
void onEveryVariant(const Body& body, int first = 0) {
  const int chosen = prim::primCpuColumn;
  for (int column = first; column <= prim::lastRunnableColumn(); ++column) {
    if (column > first && std::strcmp(prim::columnName(column), prim::columnName(column - 1)) == 0)
      continue;
    prim::primCpuColumn = column;
    SCOPED_TRACE(prim::columnName(column));
    body();
  }
  prim::primCpuColumn = chosen;
}

}  // namespace vx::test
