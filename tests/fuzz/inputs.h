#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

// The interface of libFuzzer, which every target implements.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// An input for the target that this program is linked with.
std::vector<std::uint8_t> nextInput(std::mt19937& rng);
