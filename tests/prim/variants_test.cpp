// Every primitive in every body that this machine runs, bit for bit against the generic body: the
// tests expand from the list of primitives, so that one without a driver does not compile.

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/prim/variants/drivers.h"

namespace {

class ReportColumns : public ::testing::Environment {
  void SetUp() override {
    std::printf("columns:");
    for (const int column : vx::test::bodyColumns())
      std::printf(" %d %s", column, vx::prim::columnName(column));
    std::printf("; %d trials of each primitive, seeded by its name\n", vx::test::kTrials);
  }
};
[[maybe_unused]] ::testing::Environment* const kReport =
    ::testing::AddGlobalTestEnvironment(new ReportColumns);

#define VX_PRIM(name, params, args)                                           \
  TEST(PrimVariants, name) {                                                  \
    vx::test::drive(vx::test::readPrim(#name, #args), vx::prim::table::name); \
  }
#define VX_PRIM_BLOCK(name, params, args)  // see match_test.cpp and stack_test.cpp
#include "prim/prim_list.def"
#undef VX_PRIM

}  // namespace
