#include "vxenhlib/grid/grid_curves.h"

#include <cstddef>

namespace vx {
namespace {

// Start of column x.
float* columnAt(float* row, int x, int depth) {
  return row + static_cast<std::ptrdiff_t>(x) * depth;
}

constexpr int kAbreast = 4;

// Calls some(column) for four columns at a time, then one(column) for the rest.
template <class Some, class One>
void overColumns(float* row, int columns, int depth, const Some& some, const One& one) {
  int x = 0;
  for (; x + kAbreast <= columns; x += kAbreast) some(columnAt(row, x, depth));
  for (; x < columns; ++x) one(columnAt(row, x, depth));
}

template <int kColumns>
void columnSums(const float* const (&h)[kColumns], int depth, float (&sum)[kColumns]) {
  for (int c = 0; c < kColumns; ++c) sum[c] = 0.0f;
  for (int z = 0; z < depth; ++z)
    for (int c = 0; c < kColumns; ++c) sum[c] += h[c][z];
}

template <int kColumns>
void clipSome(float* first, int depth, const HistogramClip& clip) {
  const float* h[kColumns];
  float sum[kColumns];
  float peak[kColumns] = {};
  float limit[kColumns];
  float excess[kColumns] = {};
  for (int c = 0; c < kColumns; ++c) h[c] = columnAt(first, c, depth);
  columnSums(h, depth, sum);
  for (int z = 0; z < depth; ++z)
    for (int c = 0; c < kColumns; ++c) peak[c] = h[c][z] > peak[c] ? h[c][z] : peak[c];
  const auto bins = static_cast<float>(depth);
  for (int c = 0; c < kColumns; ++c) {
    const float mean = sum[c] / bins;
    const float base = mean * clip.clipFactor;
    limit[c] = clip.clipScale * base;
    if (clip.clipScale > 0.8f && base < peak[c]) {
      const float knee = 0.8f * base;
      limit[c] = knee + (peak[c] - knee) * (clip.clipScale - 0.8f) / 0.2f;
    }
  }
  for (int z = 0; z < depth; ++z) {
    for (int c = 0; c < kColumns; ++c) {
      const float above = h[c][z] - limit[c];
      excess[c] += h[c][z] > limit[c] ? above : 0.0f;
    }
  }
  for (int c = 0; c < kColumns; ++c) {
    float* out = columnAt(first, c, depth);
    const float share = excess[c] / bins;
    const float most = limit[c];
    for (int z = 0; z < depth; ++z) out[z] = (out[z] < most ? out[z] : most) + share;
  }
}

template <int kColumns>
void flattenSome(float* first, int depth, float strength, int innerBins) {
  const float* h[kColumns];
  float sum[kColumns];
  for (int c = 0; c < kColumns; ++c) h[c] = columnAt(first, c, depth);
  columnSums(h, depth, sum);
  for (int c = 0; c < kColumns; ++c) {
    float* out = columnAt(first, c, depth);
    const float flat = (sum[c] / static_cast<float>(innerBins)) * (1.0f - strength);
    for (int z = 0; z < depth; ++z) out[z] = out[z] * strength + flat;
  }
}

// Before any sample a column is not quite 0, so that no scale divides by it.
constexpr float kLeastCount = 1e-12f;

template <int kColumns>
void integrateSome(float* first, int depth, const CurveScale& scale) {
  const float* m = scale.emphasis;
  const int pad = scale.rangePad;
  float* c[kColumns];
  float acc[kColumns];
  for (int i = 0; i < kColumns; ++i) {
    c[i] = columnAt(first, i, depth);
    acc[i] = kLeastCount;
    for (int z = 0; z <= pad; ++z) c[i][z] = m[z] * kLeastCount;
  }
  for (int z = pad + 1; z <= depth - pad - 2; ++z) {
    for (int i = 0; i < kColumns; ++i) {
      acc[i] += m[z] * c[i][z];
      c[i][z] = acc[i];
    }
  }
  for (int i = 0; i < kColumns; ++i) {
    float* column = c[i];
    for (int z = depth - pad - 1; z < depth; ++z) column[z] = m[z] * acc[i];
    const float q = (acc[i] / scale.outScale) / (1.0f - scale.outLow);
    // Up to the end of this column only: the next one begins by overwriting what the scaling would
    // do to its lower padding.
    for (int z = pad; z < depth; ++z) column[z] = scale.outLow + column[z] / q;
    if (i == kColumns - 1) {
      for (int z = depth; z < depth + pad; ++z) column[z] = scale.outLow + column[z] / q;
    }
  }
}

}  // namespace

void clipHistograms(float* row, int columns, int depth, const HistogramClip& clip) {
  overColumns(
      row, columns, depth, [&](float* h) { clipSome<kAbreast>(h, depth, clip); },
      [&](float* h) { clipSome<1>(h, depth, clip); });
}

void flattenHistograms(float* row, int columns, int depth, float strength, int innerBins) {
  overColumns(
      row, columns, depth, [&](float* h) { flattenSome<kAbreast>(h, depth, strength, innerBins); },
      [&](float* h) { flattenSome<1>(h, depth, strength, innerBins); });
}

void integrateHistograms(float* row, int columns, int depth, const CurveScale& scale) {
  overColumns(
      row, columns, depth, [&](float* c) { integrateSome<kAbreast>(c, depth, scale); },
      [&](float* c) { integrateSome<1>(c, depth, scale); });
}

}  // namespace vx
