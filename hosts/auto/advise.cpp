#include <algorithm>
#include <cmath>

#include "hosts/auto/denoise_networks.h"

namespace vx::automatic {
namespace {

double logOf(double deviation) { return std::log(std::max(deviation, 0.15)); }

}  // namespace

NetworkValues networkValues(const NoiseFeatures& f) {
  return {logOf(f.plane1), logOf(f.plane5), logOf(f.plane25), logOf(f.fine1),
          logOf(f.fine25), logOf(f.wide25), logOf(f.colour),  logOf(f.colour10),
          f.steps / 10,    f.dead,          f.coherence};
}

Advice advise(const Network& network, const NoiseFeatures& features) {
  // What lies beyond anything seen in training is taken for the utmost that was.
  constexpr double kUtmost = 2.5;
  NetworkValues x = networkValues(features);
  for (std::size_t i = 0; i < x.size(); ++i) {
    const auto mean = static_cast<double>(kNetworkInputs.mean[i]);
    x[i] = std::clamp((x[i] - mean) / static_cast<double>(kNetworkInputs.deviation[i]), -kUtmost,
                      kUtmost);
  }
  double outputs[2] = {static_cast<double>(network.biases[0]),
                       static_cast<double>(network.biases[1])};
  for (const Network::Unit& unit : network.units) {
    auto sum = static_cast<double>(unit.bias);
    for (std::size_t i = 0; i < x.size(); ++i) sum += static_cast<double>(unit.weights[i]) * x[i];
    const double value = std::tanh(sum);
    for (std::size_t i = 0; i < 2; ++i) outputs[i] += static_cast<double>(unit.outputs[i]) * value;
  }
  return {std::max(features.plane1, 0.15) * std::exp(outputs[0]), outputs[1]};
}

}  // namespace vx::automatic
