#include "round/pair_sweep.h"

#include "round/pair_trial.h"

namespace kelvo {

PairSweep MakePairSweep(const Tile& tile, const PairModel& model, int codes_plane) {
  return {MakeMoveSweep(tile, codes_plane), &model, tile.Has(KELVO_VARIANT_UNDO_ROUND_MOVES)};
}

namespace plain {

void PairRow(const PairSweep& sweep, int first, int stride, int count) {
  SearchRow<PairTrial>(sweep, first, stride, count);
}

}  // namespace plain
}  // namespace kelvo
