// What a move between two pixels of a pair does to the blurred estimate.
//
// A move of one unit adds to the later pixel b and takes from the earlier pixel a. The blurred estimate changes by the
// blur's weights around b minus those around a, in 1/65536. The response is the same on both sides but for its sign,
// turned by half around the middle of the pair.
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

// From pixel b to pixel a of a fine pair, whose cell is b.
constexpr CellStep kEarlierPixel[kPairFamilies] = {{0, -1}, {-1, 0}, {-1, -1}, {-1, 1}};

struct PairModel {
  static constexpr int kLanes = 8;       // sides are padded to whole vectors of cells with amount 0
  static constexpr int kMaxSide = 56;    // cells on one side, padded
  static constexpr int kNeighbours = 7;  // the 8-neighbours of a pixel less the other pixel of the pair

  // All distances are in cells of a plane, from the pair's cell.
  int16_t a, b;
  std::array<int16_t, kNeighbours> neighbours_a, neighbours_b;
  int16_t side;                                    // cells on one side
  int16_t padded;                                  // the same, rounded up to whole vectors
  std::array<int16_t, kMaxSide> cells_b, cells_a;  // where the blurred estimate rises, and falls by the same amount
  std::array<int32_t, kMaxSide> amounts;           // of one unit, 1/65536
};

// The model of a fine pair under the blur of round width 1..20.
const PairModel& FinePairModel(int width, PairFamily family);

}  // namespace kelvo

#endif  // KELVO_ROUND_PAIR_MODEL_H
