// What was seen and chosen of the tone, in words.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "hosts/auto/auto_tone.h"

namespace {

const char* seenWords(int seen) {
  switch (seen) {
    case VX_AUTO_TONE_DRAWING:
      return "a drawing or screenshot";
    case VX_AUTO_TONE_NIGHT:
      return "night or dusk";
    case VX_AUTO_TONE_WELL_EXPOSED:
      return "well exposed";
    case VX_AUTO_TONE_DARK:
      return "a little dark";
    default:
      return "too small to see its tone";
  }
}

}  // namespace

size_t vxAutoDescribeTone(const VxAutoTone* tone, char* text, size_t size) {
  char line[128] = "";
  if (tone != nullptr) {
    char settings[80] = "";
    const auto add = [&settings](const char* name, float value, float neutral) {
      if (value == neutral) return;
      const size_t length = std::strlen(settings);
      std::snprintf(settings + length, sizeof settings - length, "%s%s %.2f",
                    length > 0 ? ", " : "", name, static_cast<double>(value));
    };
    add("gamma", tone->lumaGamma, 0);
    add("local contrast", tone->lumaEqAmount, 0);
    add("saturation", tone->satContrast, 1);
    std::snprintf(line, sizeof line, "%s; %s", seenWords(tone->seen),
                  settings[0] != '\0' ? settings : "tone left alone");
  }
  const size_t whole = std::strlen(line);
  if (text != nullptr && size > 0) {
    const size_t kept = std::min(whole, size - 1);
    std::memcpy(text, line, kept);
    text[kept] = '\0';
  }
  return whole;
}
