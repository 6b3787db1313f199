#include "prim/kernels/shared/ints.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr std::int32_t kNothing = INT32_MAX;

bool badMap(int rows, int lanes) {
  return (lanes != 32 && lanes != 48 && lanes != 64) || rows < 1 ||
         rows > (1 << matchPositionBits(lanes)) / lanes;
}

bool badColumns(int first, int across, int lanes) {
  return first < 0 || across < 1 || first > lanes - across;
}

bool badWindow(const MatchWindow& w) {
  return badMap(w.rows, w.lanes) || badColumns(w.first, w.across, w.lanes) || w.ownRow < 0 ||
         w.ownRow >= w.rows || w.ownLane < w.first || w.ownLane >= w.first + w.across ||
         w.exclusionX < 0 || w.exclusionX > w.lanes || w.exclusionY < 0 || w.exclusionY > w.lanes ||
         w.limit < 1 || w.most < 0 || w.most > matchMostCost(w.lanes);
}

#if defined(VX_KERNEL_SCALAR)

// By the definition: everything is looked at each time.
int select(const std::int32_t* costs, const MatchWindow& w, int* picks, std::int32_t* last) {
  const auto near = [&](int at, int x, int y) {
    const int u = at % w.lanes, v = at / w.lanes;
    return x >= u - w.exclusionX && x <= u + w.exclusionX && y >= v - w.exclusionY &&
           y <= v + w.exclusionY;
  };
  picks[0] = w.ownRow * w.lanes + w.ownLane;
  *last = 0;
  for (int count = 1; count < w.limit; ++count) {
    // What is above the costs that are told apart counts as one cost, but for the second position.
    const std::int32_t most = count == 1 ? kNothing - 1 : matchMostCost(w.lanes) + 1;
    std::int32_t least = kNothing;
    int place = w.first;
    for (int y = 0; y < w.rows; ++y)
      for (int x = w.first; x < w.first + w.across; ++x) {
        bool taken = false;
        for (int i = 0; i < count; ++i) taken |= near(picks[i], x, y);
        const std::int32_t cost = costs[y * w.lanes + x];
        const std::int32_t limited = cost < most ? cost : most;
        if (taken || limited >= least) continue;
        least = limited;
        place = y * w.lanes + x;
      }
    if (least > w.most && count > 1) return count;
    picks[count] = place;
    *last = least;
    if (least > w.most) return count;
  }
  return w.limit;
}

#else

// Works on keys, min(cost, most) and the position below it in one number: the smallest key tells
// cost and place at once. Keeps the least keys of groups of rows, lane by lane, and of all groups:
// after a square is blanked only the vectors that it meets are looked at again.
template <int kVectors>
class Chooser {
 public:
  Chooser(const std::int32_t* costs, const MatchWindow& window) : costs_(costs), w_(window) {
    const Ints most = setInts(matchMostCost(kLanes) + 1);
    groups_ = (w_.rows + kGroup - 1) / kGroup;
    for (int z = 0; z < kVectors; ++z) {
      const Ints blank = outside(z) & kNothing;
      Ints position = laneNumbers(z * kInts);
      Ints all = setInts(kNothing);
      int v = 0;
      for (int g = 0; g < groups_; ++g) {
        Ints least = setInts(kNothing);
        for (const int end = v + kGroup < w_.rows ? v + kGroup : w_.rows; v < end; ++v) {
          const Ints cost = loadInts(costs + v * kLanes + z * kInts);
          const Ints key = (((smaller(cost, most) << kBits) | position) | blank) & kNothing;
          storeInts(keys_ + v * kLanes + z * kInts, key);
          least = smaller(least, key);
          position = position + kLanes;
        }
        storeInts(least_ + g * kLanes + z * kInts, least);
        all = smaller(all, least);
      }
      for (; v < groups_ * kGroup; ++v)
        storeInts(keys_ + v * kLanes + z * kInts, setInts(kNothing));
      storeInts(all_ + z * kInts, all);
    }
  }

  int run(int* picks, std::int32_t* last) {
    int at = w_.ownRow * kLanes + w_.ownLane;
    picks[0] = at;
    *last = 0;
    for (int count = 1; count < w_.limit; ++count) {
      blank(at % kLanes, at / kLanes);
      const std::int32_t key = least();
      const std::int32_t cost = key >> kBits;
      if (cost > w_.most) {
        if (count == 1) findRefused(picks + 1, last);
        return count;
      }
      at = key & ((1 << kBits) - 1);
      picks[count] = at;
      *last = cost;
    }
    return w_.limit;
  }

 private:
  static constexpr int kGroup = 5, kLanes = kVectors * kInts, kBits = matchPositionBits(kLanes);
  static constexpr int kMostGroups = ((1 << kBits) / kLanes + kGroup - 1) / kGroup;

  Ints outside(int z) const {
    const Ints lane = laneNumbers(z * kInts);
    return (lane < w_.first) | (lane >= w_.first + w_.across);
  }
  Ints square(int z, int u) const {
    const Ints lane = laneNumbers(z * kInts);
    return (lane >= u - w_.exclusionX) & (lane <= u + w_.exclusionX);
  }

  // Keys are not negative: ones in all bits but the sign make the largest number of them.
  void blank(int u, int v) {
    const int left = u - w_.exclusionX, right = u + w_.exclusionX;
    const int top = v - w_.exclusionY < 0 ? 0 : v - w_.exclusionY;
    const int bottom = v + w_.exclusionY >= w_.rows ? w_.rows - 1 : v + w_.exclusionY;
    const int end = right / kInts < kVectors ? right / kInts + 1 : kVectors;
    for (int z = left < 0 ? 0 : left / kInts; z < end; ++z) {
      const Ints ones = square(z, u) & kNothing;
      std::int32_t* keys = keys_ + z * kInts;
      std::int32_t* least = least_ + z * kInts;
      for (int y = top; y <= bottom; ++y)
        storeInts(keys + y * kLanes, loadInts(keys + y * kLanes) | ones);
      for (int g = top / kGroup; g <= bottom / kGroup; ++g) {
        const std::int32_t* row = keys + g * kGroup * kLanes;
        Ints group = loadInts(row);
        for (int k = 1; k < kGroup; ++k) group = smaller(group, loadInts(row + k * kLanes));
        storeInts(least + g * kLanes, group);
      }
      Ints all = loadInts(least);
      for (int g = 1; g < groups_; ++g) all = smaller(all, loadInts(least + g * kLanes));
      storeInts(all_ + z * kInts, all);
    }
  }

  std::int32_t least() const {
    Ints least = loadInts(all_);
    for (int z = 1; z < kVectors; ++z) least = smaller(least, loadInts(all_ + z * kInts));
    return leastLane(least);
  }

  // The best of the positions outside the block's own square, by their whole costs.
  void findRefused(int* pick, std::int32_t* cost) const {
    Ints best = setInts(kNothing), place = setInts(w_.first);
    for (int v = 0; v < w_.rows; ++v) {
      const bool near = v >= w_.ownRow - w_.exclusionY && v <= w_.ownRow + w_.exclusionY;
      for (int z = 0; z < kVectors; ++z) {
        const Ints off = near ? outside(z) | square(z, w_.ownLane) : outside(z);
        const Ints c = off != 0 ? setInts(kNothing) : loadInts(costs_ + v * kLanes + z * kInts);
        const Ints better = c < best;
        best = better ? c : best;
        place = better ? laneNumbers(v * kLanes + z * kInts) : place;
      }
    }
    *cost = leastLane(best);
    const Ints first = best == *cost ? place : setInts(kNothing);
    *pick = leastLane(first);
  }

  const std::int32_t* costs_;
  const MatchWindow& w_;
  int groups_;
  alignas(64) std::int32_t keys_[kMostGroups * kGroup * kLanes];
  alignas(64) std::int32_t least_[kMostGroups * kLanes];
  alignas(64) std::int32_t all_[kLanes];
};

#endif

}  // namespace

int primMatchCosts_32s(std::uint32_t own, const std::uint32_t* energies, std::ptrdiff_t pitch,
                       const std::int32_t* left, const std::int32_t* right, int rows, int lanes,
                       std::int32_t* costs) {
  if (energies == nullptr || left == nullptr || right == nullptr || costs == nullptr)
    return kStatusNullPtr;
  if (badMap(rows, lanes)) return kStatusBadSize;
  for (int v = 0; v < rows; ++v, energies += pitch, left += lanes, right += lanes, costs += lanes) {
#if defined(VX_KERNEL_SCALAR)
    for (int u = 0; u < lanes; ++u)
      costs[u] = static_cast<std::int32_t>(own + energies[u] + static_cast<std::uint32_t>(left[u]) +
                                           static_cast<std::uint32_t>(right[u]));
#else
    const Ints whole = setInts(static_cast<std::int32_t>(own));
    for (int u = 0; u < lanes; u += kInts)
      storeInts(costs + u,
                (whole + loadInts(energies + u)) + (loadInts(left + u) + loadInts(right + u)));
#endif
  }
  return kStatusOk;
}

int primMatchSelect_32s(const std::int32_t* costs, const MatchWindow* window, int* picks,
                        int* count, std::int32_t* last) {
  if (costs == nullptr || window == nullptr || picks == nullptr || count == nullptr ||
      last == nullptr)
    return kStatusNullPtr;
  if (badWindow(*window)) return kStatusBadSize;
#if defined(VX_KERNEL_SCALAR)
  *count = select(costs, *window, picks, last);
#else
  *count = window->lanes == 32   ? Chooser<32 / kInts>(costs, *window).run(picks, last)
           : window->lanes == 48 ? Chooser<48 / kInts>(costs, *window).run(picks, last)
                                 : Chooser<64 / kInts>(costs, *window).run(picks, last);
#endif
  return kStatusOk;
}

int primMatchLeast_32s(const std::int32_t* costs, int rows, int lanes, int first, int across,
                       std::int32_t* least) {
  if (costs == nullptr || least == nullptr) return kStatusNullPtr;
  if (badMap(rows, lanes) || badColumns(first, across, lanes)) return kStatusBadSize;
#if defined(VX_KERNEL_SCALAR)
  *least = kNothing;
  for (int v = 0; v < rows; ++v)
    for (int u = first; u < first + across; ++u)
      if (costs[v * lanes + u] < *least) *least = costs[v * lanes + u];
#else
  Ints all = setInts(kNothing);
  for (int u = first / kInts * kInts; u < first + across; u += kInts) {
    Ints some = setInts(kNothing);
    for (int v = 0; v < rows; ++v) some = smaller(some, loadInts(costs + v * lanes + u));
    const Ints lane = laneNumbers(u);
    const Ints outside = (lane < first) | (lane >= first + across);
    all = smaller(all, outside != 0 ? setInts(kNothing) : some);
  }
  *least = leastLane(all);
#endif
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
