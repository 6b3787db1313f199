// The block search in every body against sums and choices made one by one.

#include "prim/match.h"

#include "tests/prim/plane.h"
#include "tests/support/variants.h"

namespace {

using namespace vx::prim;
using vx::test::onEveryVariant;
using Map = std::vector<std::int32_t>;

constexpr int kLanes[] = {32, 48, 64};

// Samples with a row's neighbours in pairs, as large as they are in use.
struct Samples {
  static constexpr int kPitch = 128, kRows = 90;
  std::vector<std::uint32_t> pairs = std::vector<std::uint32_t>(kPitch * kRows);

  explicit Samples(unsigned seed) {
    std::mt19937 random(seed);
    int next = 0;
    for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
      const int sample = static_cast<int>(random() % 5801) - 2900;
      *pair = static_cast<std::uint32_t>(sample & 0xFFFF) | static_cast<std::uint32_t>(next) << 16;
      next = sample & 0xFFFF;
    }
  }
  const std::uint32_t* at(int x, int y) const { return pairs.data() + y * kPitch + x; }
  std::int64_t sample(int x, int y) const { return static_cast<std::int16_t>(*at(x, y) & 0xFFFF); }

  std::int32_t product(int bx, int by, int tx, int ty, int half) const {
    std::int64_t sum = 0;
    for (int r = 0; r < 2 * half; ++r)
      for (int c = 0; c < half; ++c) sum += sample(bx + c, by + r) * sample(tx + c, ty + r);
    return static_cast<std::int32_t>(-2 * sum);
  }
};

TEST(Match, columnsAreExactSumsWithAndWithoutDotProducts) {
  const Samples s(1);
  const bool machine = primDotProducts;
  for (const int half : {4, 6, 8})
    for (const int lanes : kLanes)
      for (const int rows : {1, half - 1, half, 25, lanes == 48 ? 42 : 32}) {
        SCOPED_TRACE(::testing::Message() << half << ", " << lanes << " by " << rows);
        Map sums[2];  // of the block and of that half its height below
        for (int i = 0; i < rows * lanes; ++i) {
          const auto sum = [&](int x, int y) {
            return static_cast<std::uint32_t>(s.product(x, y, 9 + i % lanes, 2 + i / lanes, half));
          };
          sums[0].push_back(static_cast<std::int32_t>(sum(5, 3) + sum(20, 3) + sum(31, 3)));
          sums[1].push_back(static_cast<std::int32_t>(sum(5, 3 + half) + sum(20, 3 + half)));
        }
        for (Map& sum : sums) sum.push_back(7);  // behind the map
        const auto check = [&] {
          Map upper(sums[0].size(), 7), lower = upper;
          const auto run = [&](int x, bool add, std::int32_t* below) {
            return primMatchColumn_32s(s.at(x, 3), s.at(9, 2), s.kPitch, half, rows, lanes, add,
                                       upper.data(), below);
          };
          ASSERT_EQ(run(5, false, lower.data()), 0);
          ASSERT_EQ(run(20, true, lower.data()), 0);
          ASSERT_EQ(run(31, true, nullptr), 0);
          ASSERT_EQ(upper, sums[0]);
          ASSERT_EQ(lower, sums[1]);
        };
        onEveryVariant(check);
        primDotProducts = false;
        onEveryVariant(check);
        primDotProducts = machine;
      }
}

TEST(Match, costsAddUpAndTheLeastIsFound) {
  std::mt19937 random(2);
  for (const int lanes : kLanes) {
    constexpr int kRows = 25, kPitch = 71;
    const auto draw = [&](int count) {
      Map map(static_cast<std::size_t>(count));
      for (auto& v : map) v = static_cast<std::int32_t>(random() % (1u << 29));
      return map;
    };
    const Map left = draw(kRows * lanes), right = draw(kRows * lanes), own = draw(kRows * kPitch);
    const std::vector<std::uint32_t> energies(own.begin(), own.end());
    Map wanted, costs(left.size());
    for (std::size_t i = 0; i < left.size(); ++i)
      wanted.push_back(1234 + own[i / unsigned(lanes) * kPitch + i % unsigned(lanes)] + left[i] +
                       right[i]);
    onEveryVariant([&] {
      ASSERT_EQ(primMatchCosts_32s(1234, energies.data(), kPitch, left.data(), right.data(), kRows,
                                   lanes, costs.data()),
                0);
      ASSERT_EQ(costs, wanted);
      for (const auto& [first, across] : {std::pair(0, lanes), {3, 1}, {lanes - 5, 5}, {7, 20}}) {
        std::int32_t found = 0, least = INT_MAX;
        for (int i = 0; i < kRows * lanes; ++i)
          if (i % lanes >= first && i % lanes < first + across)
            least = std::min(least, costs[static_cast<std::size_t>(i)]);
        ASSERT_EQ(primMatchLeast_32s(costs.data(), kRows, lanes, first, across, &found), 0);
        ASSERT_EQ(found, least) << first;
      }
    });
  }
}

// One by one over the whole window: the smallest cost, the first of equal ones, outside all
// squares.
struct Choice {
  std::vector<int> picks;
  int count = 1;
  std::int32_t last = 0;

  Choice(const Map& costs, const MatchWindow& w) : picks{w.ownRow * w.lanes + w.ownLane} {
    while (count < w.limit) {
      std::int32_t best = INT_MAX;
      int place = w.first;
      for (int v = 0; v < w.rows; ++v)
        for (int u = w.first; u < w.first + w.across; ++u) {
          const auto near = [&](int p) {
            return std::abs(u - p % w.lanes) <= w.exclusionX &&
                   std::abs(v - p / w.lanes) <= w.exclusionY;
          };
          const std::int32_t cost = costs[static_cast<std::size_t>(v * w.lanes + u)];
          if (std::any_of(picks.begin(), picks.end(), near) || cost >= best) continue;
          best = cost;
          place = v * w.lanes + u;
        }
      const bool refused = best > w.most;
      if (refused && count > 1) return;
      picks.push_back(place);
      last = best;
      if (refused) return;
      ++count;
    }
  }
};

// On maps full of equal costs, with costs that are above what keys hold, and where nothing is left.
TEST(Match, selectionTakesTheFirstSmallestEachTime) {
  std::mt19937 random(5);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  int alone = 0, nothing = 0, full = 0;
  for (int turn = 0; turn < 3000; ++turn) {
    MatchWindow w{};
    w.lanes = kLanes[below(3)];
    w.rows = 1 + below(turn % 2 == 0 ? 6 : w.lanes == 48 ? 42 : 32);
    w.across = 1 + below(turn % 2 == 0 ? 6 : w.lanes);
    w.first = below(w.lanes - w.across + 1);
    w.ownLane = w.first + below(w.across);
    w.ownRow = below(w.rows);
    w.exclusionX = below(4);
    w.exclusionY = below(4);
    w.limit = 1 + below(16);
    const int levels = 1 + below(60), scale = turn % 3 == 0 ? 1 << 24 : 3;
    w.most = below(4) == 0 ? 0 : std::min(scale * below(levels), matchMostCost(w.lanes));
    Map costs(static_cast<std::size_t>(w.rows * w.lanes));
    for (std::size_t i = 0; i < costs.size(); ++i) {
      const int u = static_cast<int>(i) % w.lanes;
      const bool inside = u >= w.first && u < w.first + w.across;
      costs[i] = inside ? scale * below(levels) : below(3) - 1;  // what is outside does not matter
    }
    const Choice wanted(costs, w);
    SCOPED_TRACE(turn);
    onEveryVariant([&] {
      std::vector<int> picks(static_cast<std::size_t>(w.limit), -1);
      int count = 0;
      std::int32_t last = -1;
      ASSERT_EQ(primMatchSelect_32s(costs.data(), &w, picks.data(), &count, &last), 0);
      picks.resize(wanted.picks.size());
      ASSERT_EQ(count, wanted.count);
      ASSERT_EQ(picks, wanted.picks);
      ASSERT_EQ(last, wanted.last);
    });
    alone += wanted.count == 1 && w.limit > 1 ? 1 : 0;
    nothing += wanted.last == INT_MAX ? 1 : 0;
    full += wanted.count == w.limit ? 1 : 0;
  }
  EXPECT_GT(std::min({alone, nothing, full}), 100);
}

TEST(Match, badArgumentsAreRefused) {
  const std::vector<std::uint32_t> pairs(4096);
  Map a(4096, 5), b(4096, 5);
  const std::int32_t* in = a.data();
  int picks[16] = {}, count = 9;
  std::int32_t last = 9, *out = b.data();
  onEveryVariant([&] {
    const auto search = [&](int half, int rows, int lanes, std::int32_t* upper) {
      return primMatchColumn_32s(pairs.data(), pairs.data(), 64, half, rows, lanes, false, upper,
                                 nullptr);
    };
    EXPECT_EQ(search(4, 25, 32, nullptr), kStatusNullPtr);
    for (const auto& [half, rows, lanes] :
         {std::tuple(5, 25, 32), {4, 0, 32}, {4, 33, 32}, {4, 43, 48}, {4, 65, 64}, {4, 25, 40}})
      EXPECT_EQ(search(half, rows, lanes, out), kStatusBadSize);
    EXPECT_EQ(primMatchCosts_32s(0, pairs.data(), 64, in, nullptr, 9, 32, out), kStatusNullPtr);
    EXPECT_EQ(primMatchCosts_32s(0, pairs.data(), 64, in, in, 33, 32, out), kStatusBadSize);
    EXPECT_EQ(primMatchLeast_32s(in, 9, 32, 0, 4, nullptr), kStatusNullPtr);
    for (const auto& [first, across] : {std::pair(-1, 4), {29, 4}, {3, 0}, {2, INT_MAX}})
      EXPECT_EQ(primMatchLeast_32s(in, 9, 32, first, across, &last), kStatusBadSize);
    EXPECT_EQ(primMatchSelect_32s(in, nullptr, picks, &count, &last), kStatusNullPtr);
    for (int MatchWindow::*field :
         {&MatchWindow::rows, &MatchWindow::lanes, &MatchWindow::first, &MatchWindow::across,
          &MatchWindow::ownLane, &MatchWindow::ownRow, &MatchWindow::exclusionX,
          &MatchWindow::exclusionY, &MatchWindow::limit, &MatchWindow::most})
      for (const int bad : {-1, field == &MatchWindow::limit ? 0 : INT_MAX}) {
        MatchWindow w = {9, 32, 2, 20, 5, 5, 1, 1, 8, 100};
        w.*field = bad;
        EXPECT_EQ(primMatchSelect_32s(in, &w, picks, &count, &last), kStatusBadSize);
      }
  });
  EXPECT_EQ(count + last, 18);
  EXPECT_EQ(b, Map(4096, 5));
}

}  // namespace
