// What a move between the two pixels of a pair does to the estimate and to the blurred estimate.
//
// A move of q shifts light from pixel a to pixel b. In the fine pass the two are neighbours, and the move adds q to b
// and takes it from a. In the coarse pass they lie two cells apart around a grid point, and the move adds q times the
// tent
//
//     1 2 1
//     2 4 2      around b and takes it around a.
//     1 2 1
//
// The blurred estimate changes by the blur's response, in 1/65536: weights around b minus weights around a. The
// response is the same on both sides but for its sign, turned by half around the middle of the pair.
#ifndef KELVO_ROUND_PAIR_MODEL_H
#define KELVO_ROUND_PAIR_MODEL_H

#include <array>
#include <cstdint>

#include "stages/stencil.h"
#include "stages/tile.h"

namespace kelvo {

// The four families of pairs, in the order in which they move.
enum PairFamily { kHorizontalPair, kVerticalPair, kDiagonalPair, kAntiDiagonalPair, kPairFamilies };

// Plane of a family's coded moves.
constexpr int kPairPlanes[kPairFamilies] = {kHorizontal, kVertical, kDiagonal, kAntiDiagonal};

enum class PairKind { kFine, kCoarse };

// A cell of the estimate that a move changes, and by how many times.
struct SpreadCell {
  int16_t cell;
  int16_t weight;
};

struct PairModel {
  static constexpr int kLanes = 8;     // sides are padded to whole vectors of cells with amount 0
  static constexpr int kMaxSide = 96;  // cells on one side, padded
  static constexpr int kNeighbours =
      7;  // the cells around a pixel, as far away as the pairs lie apart, less the other pixel
  static constexpr int kMaxSpread = 18;  // two tents

  // All distances are in cells of a plane, from the cell that holds the pair's coded move.
  int16_t a, b;
  std::array<int16_t, kNeighbours> neighbours_a, neighbours_b;
  int16_t reach;   // rows and columns from the pair's cell to any that it reads or writes
  int16_t span;    // columns from the leftmost of these cells to the rightmost, both included
  int16_t side;    // cells on one side
  int16_t padded;  // the same, rounded up to whole vectors
  std::array<int16_t, kMaxSide> cells_b, cells_a;  // where the blurred estimate rises, and falls by the same amount
  std::array<int32_t, kMaxSide> amounts;           // of one unit, 1/65536
  int32_t total_amount;                            // of one side
  std::array<SpreadCell, kMaxSpread> spread;
  int16_t spread_count;
  int16_t spread_shift;  // a step of e changes the pixels by e, and so spreads q = e >> spread_shift
  int16_t apply_shift;   // a decoded step d is applied as a move of q = d >> apply_shift
};

// The model of a pair under the blur of round width 1..20; coarse pairs exist for widths 8..20.
const PairModel& ModelOf(PairKind kind, int width, PairFamily family);

}  // namespace kelvo

#endif  // KELVO_ROUND_PAIR_MODEL_H
