#pragma once

// The test framework and what of the standard library nearly every test uses.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>
