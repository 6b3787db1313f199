#include "tests/prim/variants/trial.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

namespace vx::test {
namespace {

// The processor's own NaN. With another one the operand that a compiler puts first would show in
// the sign of a sum of two NaNs, which no formula decides.
const float kNaN = -std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::uint32_t seedOf(std::string_view name, int number) {
  std::uint32_t hash = 2166136261u;  // FNV-1a
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash + static_cast<std::uint32_t>(number);
}

}  // namespace

Trial::Trial(const Prim& entry, int number) : number_(number), seed_(seedOf(entry.name, number)) {
  rng.seed(seed_);
  placement = static_cast<Placement>(number % kPlacements);
  const int index = number / kPlacements;
  const bool isLong = index >= kNarrowWidths;
  width = isLong ? kLongWidths[index - kNarrowWidths] : index + 1;
  height = isLong ? kLongHeight : pick({1, 2, 3, 5, 8});
  packed = oneIn(6);
  bottomUp = oneIn(12);
  fill = static_cast<Fill>(uniform(0, int(Fill::wild)));
}

float Trial::floatValue() {
  static const float kSpecial[] = {0.0f,      -0.0f,   kInfinity,  -kInfinity, kNaN,     FLT_MAX,
                                   -FLT_MAX,  FLT_MIN, 1e-40f,     -1e-40f,    0.5f,     1.5f,
                                   2.5f,      254.5f,  254.50002f, 0.4999999f, 65535.0f, 32767.5f,
                                   -32768.5f, 1.0f,    88.72284f,  -87.33655f, 3e9f,     -3e9f};
  const auto r = static_cast<std::uint32_t>(rng());
  switch (fill) {
    case Fill::few:
      return static_cast<float>(r % 4) * 0.25f;
    case Fill::unit:
      return static_cast<float>(r >> 8) * 0x1p-24f;
    case Fill::pixels:
      return static_cast<float>(r % 1536) * 0.25f - 64.0f;
    case Fill::words:
      return static_cast<float>(r % 262144) * 0.5f - 49152.0f;
    case Fill::spread:
      return std::ldexp(static_cast<float>(static_cast<int>(r | 0x40000000)), uniform(-60, -1));
    case Fill::wild:
      break;
  }
  return r % 4 == 0 ? pick(kSpecial) : static_cast<float>(r % 4096) * 0.125f - 128.0f;
}

std::int64_t Trial::integerValue(bool isSigned, std::size_t bytes) {
  const std::int64_t high = (std::int64_t{1} << (8 * bytes - (isSigned ? 1 : 0))) - 1;
  const std::int64_t low = isSigned ? -high - 1 : 0;
  const auto r = static_cast<std::int64_t>(rng());
  switch (fill) {
    case Fill::few:
    case Fill::unit:
      return r % 4 - (isSigned ? 1 : 0);
    case Fill::wild: {
      const std::int64_t kSpecial[] = {low, low + 1, high - 1, high, 0, 1, high / 2, high / 2 + 1};
      return pick(kSpecial);
    }
    case Fill::pixels:
      return r % 256;
    default:
      return low + r % (high - low + 1);
  }
}

}  // namespace vx::test
