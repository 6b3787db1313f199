#pragma once

#include "prim/prims.h"

// The code bodies, weakest first: the columns of the dispatch table. Columns 0 to 5 are the values
// of primCpuIndex; the last two are chosen inside index 5 on later processors. A 64-bit build runs
// on no processor without SSE2, so columns 1 to 3 name one body.
#define VX_FOR_EACH_COLUMN(M, x) \
  M(generic, x) M(sse2, x) M(sse2, x) M(sse2, x) M(ssse3, x) M(sse41, x) M(avx2, x) M(avx512, x)
#define VX_FOR_EACH_BODY(M, x) \
  M(generic, x) M(sse2, x) M(ssse3, x) M(sse41, x) M(avx2, x) M(avx512, x)

namespace vx::prim {

#define VX_COUNT(variant, x) +1
inline constexpr int kColumnCount = 0 VX_FOR_EACH_COLUMN(VX_COUNT, );
#undef VX_COUNT

/// Column of the table that the entry points use: primCpuIndex, or 6 and 7 for the wide levels.
extern int primCpuColumn;

/// Name of the body in a column.
const char* columnName(int column);

/// Last column that this processor and its operating system can run.
int lastRunnableColumn() noexcept;

namespace table {  // one row of addresses per primitive
#define VX_PRIM(name, params, args) extern decltype(&prim::name) const name[kColumnCount];
#include "prim/prim_list.def"
#undef VX_PRIM
}  // namespace table

}  // namespace vx::prim
