// Runs a whole test program at one processor level: the variable VX_TEST_LEVEL, read here and
// nowhere else, names it. Without it each test runs what it attaches to, or the generic bodies.

#include <cstdio>

#include "prim/dispatch.h"
#include "tests/support/test.h"

namespace {

using namespace vx::prim;

// By the columns of the dispatch table.
constexpr const char* kLevels[kColumnCount] = {"generic", "sse",   "sse2", "sse3",
                                               "ssse3",   "sse41", "avx2", "avx512"};

// Before each test, because tests of the choice itself change it.
class ForEachTest : public ::testing::EmptyTestEventListener {
 public:
  explicit ForEachTest(int column) : column_(column) {}
  void OnTestStart(const ::testing::TestInfo&) override { primCpuColumn = column_; }

 private:
  const int column_;
};

[[maybe_unused]] const bool installed = [] {
  const char* name = std::getenv("VX_TEST_LEVEL");
  if (name == nullptr || *name == 0) return false;
  int column = 0;
  while (column < kColumnCount && std::strcmp(kLevels[column], name) != 0) ++column;
  if (column == kColumnCount) {
    std::fprintf(stderr, "VX_TEST_LEVEL=%s is none of tests/support/level.cpp\n", name);
    std::exit(2);
  }
  if (column > lastRunnableColumn()) {
    std::printf("[  SKIPPED ] no %s here\n", name);
    std::exit(0);
  }
  std::printf("level %s: the bodies of %s\n", name, columnName(column));
  ::testing::UnitTest::GetInstance()->listeners().Append(new ForEachTest(column));
  return true;
}();

}  // namespace
