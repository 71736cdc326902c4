// The sweep over the pairs of one family: every pair searches its move and codes it.
#ifndef KELVO_ROUND_PAIR_SWEEP_H
#define KELVO_ROUND_PAIR_SWEEP_H

#include <cstdint>

#include "round/pair_model.h"
#include "stages/fixed_point.h"
#include "stages/move_sweep.h"
#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo {

// What all pairs of a sweep share.
struct PairSweep : MoveSweep {
  const PairModel* model;
  bool undo;  // moves are taken back once they are coded
};

// The sweeps of an iteration, family after family, each row by row over the same cells: every `stride`-th row and column
// of the window, from its first on.
struct PairMoves {
  std::array<PairSweep, kPairFamilies> sweeps;
  int count;
  Window window;
  int stride;

  int PairsInRow() const { return (window.columns() + stride - 1) / stride; }
};

// Adds a move of q to the estimate around `estimate`, the pair's cell.
inline void Spread(const PairModel& model, int32_t* estimate, int32_t q) {
  for (size_t i = 0; i < static_cast<size_t>(model.spread_count); ++i) {
    int32_t& cell = estimate[model.spread[i].cell];
    cell = Signed(Bits(cell) + Bits(model.spread[i].weight) * Bits(q));
  }
}

PairSweep MakePairSweep(const Tile& tile, const PairModel& model, int codes_plane);

namespace plain {

// See Routines::move_pairs. A pair whose moves stay changes the planes that the next pair reads, so the order, left to
// right, is part of the result.
void MovePairs(const PairMoves& moves);

}  // namespace plain

namespace avx2 {
void MovePairs(const PairMoves& moves);
}
namespace KELVO_TARGET {

void MovePairs(const PairMoves& moves);

}  // namespace KELVO_TARGET

}  // namespace kelvo

#endif  // KELVO_ROUND_PAIR_SWEEP_H
