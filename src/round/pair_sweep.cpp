#include "round/pair_sweep.h"

#include "round/pair_trial.h"

namespace kelvo {

PairSweep MakePairSweep(const Tile& tile, const PairModel& model, int codes_plane) {
  return {MakeMoveSweep(tile, codes_plane), &model, tile.Has(KELVO_VARIANT_UNDO_ROUND_MOVES)};
}

namespace plain {

void MovePairs(const PairMoves& moves) {
  for (size_t family = 0; family < static_cast<size_t>(moves.count); ++family)
    for (int row = moves.window.first_row; row < moves.window.end_row; row += moves.stride)
      SearchRow<PairTrial>(moves.sweeps[family], CellsTo(row, moves.window.first_column), moves.stride,
                           moves.PairsInRow());
}

}  // namespace plain
}  // namespace kelvo
