#pragma once

// The search for similar blocks by exact sums of squared differences. Samples are small integers,
// held as pairs: element x of a row is sample x in the low half and sample x + 1 in the high one,
// so that one multiplication takes two of them.
//
// A map has a row of `lanes` elements for each row of positions that a block is compared with, 32,
// 48 or 64 of them, for at most as many rows as leave positions below 2^10, 2^11 and 2^12. Sums are
// of 32 bits and wrap: a cost is right where it is below 2^31.
//
// Errors of all of them: kStatusNullPtr for any null pointer, kStatusBadSize for sizes outside what
// is said.

#include <cstddef>

#include "prim/types.h"

namespace vx::prim {

/// Bits of a position v * lanes + u.
constexpr int matchPositionBits(int lanes) { return lanes == 32 ? 10 : lanes == 48 ? 11 : 12; }

/// Row v of such a position, by divisors that the compiler knows.
constexpr int matchRow(int position, int lanes) {
  const auto p = static_cast<unsigned>(position);
  return static_cast<int>(lanes == 32 ? p / 32 : lanes == 48 ? p / 48 : p / 64);
}

/// Whether the processor has dot products of words in vectors of 512 bits; the bodies of that level
/// use them then. Chosen with the processor's body.
extern bool primDotProducts;

/// Half of the products of blocks of `2 * half` samples a side with all positions, times -2: a
/// block is two columns of cells, `half` samples wide and high, and one column serves two blocks
/// that lie half a block apart.
///
///     block                      maps
///     +---+  cells 0 and 1  ->   upper(u, v), the block at the top of the column
///     | 0 |
///     +---+
///     | 1 |  cells 1 and 2  ->   lower(u, v), the block half its height below
///     +---+
///     | 2 |
///     +---+
///
/// upper(u, v) = -2 * sum over r < 2 * half and c < half of block(c, r) * target(u + c, v + r), and
/// lower the same with block(c, half + r).
///
/// @param block,target  pairs, rows `pitch` elements apart; of the target lanes + half - 2 elements
///   of rows + 2 * half - 1 rows are read
/// @param half   4, 6 or 8
/// @param add    to what the maps hold
/// @param lower  null where only the upper block is wanted: cell 2 is not read then
int primMatchColumn_32s(const std::uint32_t* block, const std::uint32_t* target,
                        std::ptrdiff_t pitch, int half, int rows, int lanes, bool add,
                        std::int32_t* upper, std::int32_t* lower);

/// The costs of a block at all positions, sums of squared differences: costs(u, v) = own +
/// energies(u, v) + left(u, v) + right(u, v).
///
/// @param own         sum of the squares of the block
/// @param energies    the same at the positions, rows `pitch` elements apart
/// @param left,right  maps of the two columns of cells
int primMatchCosts_32s(std::uint32_t own, const std::uint32_t* energies, std::ptrdiff_t pitch,
                       const std::int32_t* left, const std::int32_t* right, int rows, int lanes,
                       std::int32_t* costs);

/// The largest cost up to which positions are taken: what is above is told apart no more.
constexpr std::int32_t matchMostCost(int lanes) {
  return (std::int32_t{1} << (31 - matchPositionBits(lanes))) - 2;
}

/// A window of a map of costs, and how positions are chosen from it.
struct MatchWindow {
  int rows, lanes;             ///< of the map
  int first, across;           ///< columns of the window
  int ownLane, ownRow;         ///< the block's own position, in the window
  int exclusionX, exclusionY;  ///< half-widths of what each position taken keeps free of others
  int limit;                   ///< most positions, the block's own among them
  std::int32_t most;           ///< the largest cost that is taken, up to matchMostCost()
};

/// Takes the position of the smallest cost again and again, the first by rows of equal ones. The
/// block's own position comes before all, whatever it costs.
///
/// @param costs  not negative inside the window, anything outside
/// @param picks  positions v * lanes + u, `limit` at most: those taken, and where the second is
///   refused, that one too; if nothing is left for it, the window's first position
/// @param count  positions taken
/// @param last   cost of the last position written: 0 for the block itself, INT32_MAX if nothing is
///   left
int primMatchSelect_32s(const std::int32_t* costs, const MatchWindow* window, int* picks,
                        int* count, std::int32_t* last);

/// least = the smallest cost of `across` columns from `first` on.
int primMatchLeast_32s(const std::int32_t* costs, int rows, int lanes, int first, int across,
                       std::int32_t* least);

}  // namespace vx::prim
