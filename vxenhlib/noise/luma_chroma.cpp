#include "vxenhlib/noise/luma_chroma.h"

#include "prim/colour.h"

namespace vx {
namespace {

using Twist = float[3][4];

constexpr Twist kForward[2] = {{{0.21327f, 0.41869f, 0.081312f, 0.0f},
                                {-0.13062f, -0.25644f, 0.38706f, 0.61176f},
                                {0.37288f, -0.31224f, -0.060639f, 0.53725f}},
                               {{0.21327f, 0.41869f, 0.081312f, 0.0f},
                                {-0.13062f, -0.25644f, 0.38706f, 0.0f},
                                {0.37288f, -0.31224f, -0.060639f, 0.0f}}};
constexpr Twist kInverse[2] = {{{1.402f, 0.0f, 1.88f, -1.0100299f},
                                {1.402f, -0.44455f, -0.9576f, 0.78642851f},
                                {1.402f, 2.289f, 0.0f, -1.4003187f}},
                               {{1.402f, 0.0f, 1.88f, 0.0f},
                                {1.402f, -0.44455f, -0.9576f, 0.0f},
                                {1.402f, 2.289f, 0.0f, 0.0f}}};

void twist(const PlaneView rows[3], const Twist& matrix) {
  float* const data[3] = {rows[0].data, rows[1].data, rows[2].data};
  prim::primColorTwist_32f_P3IR(data, rows[0].step, rows[0].width, rows[0].height, matrix);
}

void twist(GIMG<float>* const planes[3], const Twist& matrix) {
  PlaneView rows[3];
  for (int c = 0; c < 3; ++c)
    rows[c] = {planes[c]->base, planes[c]->step, planes[c]->width, planes[c]->height};
  twist(rows, matrix);
}

}  // namespace

int toLumaChroma(GIMG<float>* const planes[3], bool centred) {
  twist(planes, kForward[centred ? 1 : 0]);
  return 1;
}
int fromLumaChroma(GIMG<float>* const planes[3], bool centred) {
  twist(planes, kInverse[centred ? 1 : 0]);
  return 1;
}
void toLumaChroma(const PlaneView rows[3], bool centred) { twist(rows, kForward[centred ? 1 : 0]); }
void fromLumaChroma(const PlaneView rows[3], bool centred) {
  twist(rows, kInverse[centred ? 1 : 0]);
}

}  // namespace vx
