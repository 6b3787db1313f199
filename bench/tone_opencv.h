#pragma once

#include <cstdint>
#include <functional>
#include <vector>

/// One step of the chain as OpenCV offers it, ready to run again and again on buffers of its own.
struct PeerStep {
  const char* name;
  bool listed;  ///< part of the shorter sum: one equalisation
  std::function<void()> run;
};

/// The steps of the whole tone chain in OpenCV on one thread, for RGB bytes of width by height.
std::vector<PeerStep> openCvToneChain(const std::vector<std::uint8_t>& rgb, int width, int height);
