// Runs a whole test program at one processor level: the variable VX_TEST_LEVEL, read here and
// nowhere else, names it. Without it each test runs what it attaches to, or the generic bodies.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "prim/cpu.h"
#include "prim/dispatch.h"

namespace {

using namespace vx::prim;

// A processor code that stands for the level, and the wide level inside index 5.
struct Level {
  const char* name;
  int code, wide, column;
};
constexpr Level kLevels[] = {{"generic", -1, 0, 0}, {"sse", 64, 0, 1},   {"sse2", 65, 0, 2},
                             {"sse3", 66, 0, 3},    {"ssse3", 67, 0, 4}, {"sse41", 68, 0, 5},
                             {"avx2", 69, 1, 6},    {"avx512", 69, 2, 7}};
static_assert(std::size(kLevels) == kColumnCount);

bool force(const Level& level) {
  return primSetCpuByCode(level.code) == 0 && primSetWideLevel(level.wide) == level.wide &&
         primCpuColumn == level.column;
}

// Before each test, because tests of the choice itself change it.
class ForEachTest : public ::testing::EmptyTestEventListener {
 public:
  explicit ForEachTest(const Level& level) : level_(level) {}
  void OnTestStart(const ::testing::TestInfo&) override { force(level_); }

 private:
  const Level& level_;
};

[[maybe_unused]] const bool installed = [] {
  const char* name = std::getenv("VX_TEST_LEVEL");
  if (name == nullptr || *name == 0) return false;
  for (const Level& level : kLevels)
    if (std::strcmp(level.name, name) == 0) {
      if (!force(level)) {
        std::printf("[  SKIPPED ] no %s here\n", name);
        std::exit(0);
      }
      std::printf("level %s: the bodies of %s\n", name, columnName(primCpuColumn));
      ::testing::UnitTest::GetInstance()->listeners().Append(new ForEachTest(level));
      return true;
    }
  std::fprintf(stderr, "VX_TEST_LEVEL=%s: none of", name);
  for (const Level& level : kLevels) std::fprintf(stderr, " %s", level.name);
  std::fprintf(stderr, "\n");
  std::exit(2);
}();

}  // namespace
