// Bytes without any structure, for targets that make arguments of them.

#include "tests/fuzz/inputs.h"

std::vector<std::uint8_t> nextInput(std::mt19937& rng) {
  std::vector<std::uint8_t> input(40 + rng() % 160);
  for (std::uint8_t& byte : input) byte = static_cast<std::uint8_t>(rng());
  return input;
}
