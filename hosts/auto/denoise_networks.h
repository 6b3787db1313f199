// From the features of a picture's noise to how strongly it should be filtered: two small networks,
// one for each filter, fitted to what the filter really gains.
//
// A formula from the noise alone does not do: with the true sigma known and one fixed multiple of
// it, textured pictures lose up to 5 dB. How much a filter gains depends on the flat places (the
// noise), on what lies above them (the texture), and on the fine colour, which the non-local filter
// halves at any strength.
#pragma once

#include <array>

#include "hosts/auto/noise_features.h"

namespace vx::automatic {

constexpr int kInputs = 11, kHidden = 24;

/// Inputs are the logarithms of the features (`steps`, `dead` and `coherence` as they are), less
/// their mean, by their deviation, both over the training pictures.
struct NetworkInputs {
  std::array<float, kInputs> mean, deviation;
};

/// One layer of tanh between inputs and outputs.
struct Network {
  struct Unit {
    std::array<float, kInputs> weights;
    float bias;
    std::array<float, 2> outputs;
  };
  std::array<Unit, kHidden> units;
  /// Of the outputs: the logarithm of the amount in relation to plane1; and how sure it is to gain,
  /// as log odds.
  std::array<float, 2> biases;
};

extern const NetworkInputs kNetworkInputs;
extern const Network kNonLocalNetwork, kFastNetwork;

using NetworkValues = std::array<double, kInputs>;

/// The features as the networks take them, before mean and deviation.
NetworkValues networkValues(const NoiseFeatures& features);

struct Advice {
  double amount;  // levels of 255
  double sure;    // log odds that the filter gains
};

Advice advise(const Network& network, const NoiseFeatures& features);

}  // namespace vx::automatic
