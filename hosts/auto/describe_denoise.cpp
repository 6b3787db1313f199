// What was seen and chosen, in words.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "hosts/auto/auto_noise.h"

namespace {

using Words = std::array<char, 80>;  // longer than any of the lines below

Words seenWords(const VxAutoNoise& noise) {
  Words words{};
  const auto print = [&words](const char* text) {
    std::snprintf(words.data(), words.size(), "%s", text);
  };
  const auto sigma = static_cast<double>(noise.sigma);
  switch (noise.seen) {
    case VX_AUTO_CLEAN:
      print("no noise seen");
      break;
    case VX_AUTO_DRAWING:
      print("a drawing or screenshot");
      break;
    case VX_AUTO_NOISY:
      std::snprintf(words.data(), words.size(), "noise %.1f, %s", sigma,
                    noise.correlation < 1.6F ? "white" : "correlated");
      break;
    case VX_AUTO_ASSUMED:
      std::snprintf(words.data(), words.size(), "noise taken to be %.1f", sigma);
      break;
    default:
      print("too small to see its noise");
  }
  return words;
}

Words choiceWords(const VxAutoDenoise& choice) {
  Words words{};
  if (choice.strength > 0) {
    std::snprintf(words.data(), words.size(), "%s, strength %.2f",
                  choice.mode == VX_AUTO_FAST ? "fast" : "non-local",
                  static_cast<double>(choice.strength));
  } else {
    std::snprintf(words.data(), words.size(), "off");
  }
  return words;
}

}  // namespace

size_t vxAutoDescribeDenoise(const VxAutoNoise* noise, const VxAutoDenoise* choice, char* text,
                             size_t size) {
  const Words seen = noise != nullptr ? seenWords(*noise) : Words{};
  const Words chosen = choice != nullptr ? choiceWords(*choice) : Words{};
  std::array<char, 2 * sizeof(Words) + 2> line{};
  const int length =
      std::snprintf(line.data(), line.size(), "%s%s%s", seen.data(),
                    noise != nullptr && choice != nullptr ? "; " : "", chosen.data());
  const auto whole = static_cast<size_t>(std::max(length, 0));
  if (text != nullptr && size > 0) {
    const size_t kept = std::min(whole, size - 1);
    std::memcpy(text, line.data(), kept);
    text[kept] = '\0';
  }
  return whole;
}
