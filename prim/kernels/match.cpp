#include "prim/kernels/shared/ints.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr std::int32_t kNothing = INT32_MAX;

bool badMap(int rows, int lanes) {
  return (lanes != 32 && lanes != 48 && lanes != 64) || rows < 1 ||
         std::int64_t{rows} * lanes > 1 << matchPositionBits(lanes);
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

// The keys of the positions that are left, min(cost, most) and the position below it in one number:
// the smallest key tells cost and place at once. Beside them the least keys of groups of rows, lane
// by lane: after a square is blanked only the vectors that it meets are looked at again.
template <int kVectors>
struct Keys {
  static constexpr int kGroup = 5, kLanes = kVectors * kInts, kBits = matchPositionBits(kLanes);
  static constexpr int kGroups = ((1 << kBits) / kLanes + kGroup - 1) / kGroup;

  alignas(64) std::int32_t keys[kGroups * kGroup * kLanes];
  alignas(64) std::int32_t least[kGroups * kLanes];
  // From kLanes - u on: ones in the lanes near lane u.
  alignas(64) std::int32_t near[2 * kLanes];
};

// The settings are members of their own, apart from what is written: they stay in registers.
template <int kVectors>
class Chooser {
  using K = Keys<kVectors>;

 public:
  [[gnu::always_inline]] Chooser(const std::int32_t* costs, const MatchWindow& w, K& scratch)
      : rows_(w.rows),
        groups_((w.rows + K::kGroup - 1) / K::kGroup),
        exclusionX_(w.exclusionX),
        exclusionY_(w.exclusionY),
        s_(scratch) {
    for (int i = 0; i < 2 * K::kLanes; i += kInts) {
      const Ints lane = laneNumbers(i - K::kLanes);
      storeInts(s_.near + i, ((lane >= -exclusionX_) & (lane <= exclusionX_)) & kNothing);
    }
    const Ints most = setInts(matchMostCost(K::kLanes) + 1);
    for (int z = 0; z < kVectors; ++z) {
      Ints position = laneNumbers(z * kInts);
      const Ints outside = ((position < w.first) | (position >= w.first + w.across)) & kNothing;
      const std::int32_t* from = costs + z * kInts;
      const auto next = [&] {
        const Ints key =
            (((smaller(loadInts(from), most) << K::kBits) | position) | outside) & kNothing;
        position = position + K::kLanes;
        from += K::kLanes;
        return key;
      };
      Ints row[K::kGroup];
      int g = 0;
      for (; g < rows_ / K::kGroup; ++g) {
        for (Ints& key : row) key = next();
        put(g, z, row);
      }
      if (g == groups_) continue;
      for (int k = 0; k < K::kGroup; ++k)
        row[k] = g * K::kGroup + k < rows_ ? next() : setInts(kNothing);
      put(g, z, row);
    }
  }

  // Keys are not negative: ones in all bits but the sign make the largest number of them.
  [[gnu::always_inline]] void blank(int at) {
    const int v = matchRow(at, K::kLanes), u = at - v * K::kLanes;
    const int top = v < exclusionY_ ? 0 : v - exclusionY_;
    const int bottom = v + exclusionY_ < rows_ ? v + exclusionY_ : rows_ - 1;
    // Two vectors even where one would do: the processor foresees what is always the same.
    const int left = u < exclusionX_ ? 0 : (u - exclusionX_) / kInts;
    const int right = (u + exclusionX_) / kInts;
    const int first = left < kVectors - 2 ? left : kVectors - 2;
    const int end = right >= kVectors ? kVectors : right > first + 1 ? right + 1 : first + 2;
    const std::int32_t* near = s_.near + K::kLanes - u;
    for (int z = first; z < end; ++z) {
      const Ints ones = loadInts(near + z * kInts);
      std::int32_t* keys = s_.keys + z * kInts;
      for (int y = top; y <= bottom; ++y)
        storeInts(keys + y * K::kLanes, loadInts(keys + y * K::kLanes) | ones);
    }
    for (int g = top / K::kGroup; g <= bottom / K::kGroup; ++g)
      for (int z = first; z < end; ++z) {
        const std::int32_t* keys = s_.keys + g * K::kGroup * K::kLanes + z * kInts;
        Ints row[K::kGroup];
        for (int k = 0; k < K::kGroup; ++k) row[k] = loadInts(keys + k * K::kLanes);
        storeInts(s_.least + g * K::kLanes + z * kInts, leastOf(row));
      }
  }

  [[gnu::always_inline]] std::int32_t least() const {
    Ints least[2] = {loadInts(s_.least), loadInts(s_.least + kInts)};
    for (int z = 2; z < kVectors; ++z)
      least[z % 2] = smaller(least[z % 2], loadInts(s_.least + z * kInts));
    for (int g = 1; g < groups_; ++g)
      for (int z = 0; z < kVectors; ++z)
        least[z % 2] = smaller(least[z % 2], loadInts(s_.least + g * K::kLanes + z * kInts));
    return leastLane(smaller(least[0], least[1]));
  }

 private:
  [[gnu::always_inline]] void put(int g, int z, const Ints (&row)[K::kGroup]) {
    for (int k = 0; k < K::kGroup; ++k)
      storeInts(s_.keys + (g * K::kGroup + k) * K::kLanes + z * kInts, row[k]);
    storeInts(s_.least + g * K::kLanes + z * kInts, leastOf(row));
  }
  static Ints leastOf(const Ints (&row)[K::kGroup]) {
    return smaller(smaller(smaller(row[0], row[1]), smaller(row[2], row[3])), row[4]);
  }

  const int rows_, groups_, exclusionX_, exclusionY_;
  K& s_;
};

// The best of the positions outside the block's own square, by their whole costs.
void findRefused(const std::int32_t* costs, const MatchWindow& w, int* pick, std::int32_t* cost) {
  Ints best = setInts(kNothing), place = setInts(w.first);
  for (int v = 0; v < w.rows; ++v) {
    const bool near = v >= w.ownRow - w.exclusionY && v <= w.ownRow + w.exclusionY;
    for (int u = 0; u < w.lanes; u += kInts) {
      const Ints lane = laneNumbers(u);
      Ints off = (lane < w.first) | (lane >= w.first + w.across);
      if (near) off |= (lane >= w.ownLane - w.exclusionX) & (lane <= w.ownLane + w.exclusionX);
      const Ints c = off != 0 ? setInts(kNothing) : loadInts(costs + v * w.lanes + u);
      const Ints better = c < best;
      best = better ? c : best;
      place = better ? laneNumbers(v * w.lanes + u) : place;
    }
  }
  *cost = leastLane(best);
  const Ints first = best == *cost ? place : setInts(kNothing);
  *pick = leastLane(first);
}

template <int kVectors>
int choose(const std::int32_t* costs, const MatchWindow& w, int* picks, std::int32_t* last) {
  using K = Keys<kVectors>;
  K scratch;
  Chooser<kVectors> chooser(costs, w, scratch);
  const int limit = w.limit, most = w.most;
  int at = w.ownRow * K::kLanes + w.ownLane;
  std::int32_t cost = 0;
  int count = 1;
  picks[0] = at;
  for (; count < limit; ++count) {
    chooser.blank(at);
    const std::int32_t key = chooser.least();
    if (key >> K::kBits > most) break;
    cost = key >> K::kBits;
    at = key & ((1 << K::kBits) - 1);
    picks[count] = at;
  }
  *last = cost;
  if (count == 1 && limit > 1) findRefused(costs, w, picks + 1, last);
  return count;
}

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
  *count = window->lanes == 32   ? choose<32 / kInts>(costs, *window, picks, last)
           : window->lanes == 48 ? choose<48 / kInts>(costs, *window, picks, last)
                                 : choose<64 / kInts>(costs, *window, picks, last);
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
