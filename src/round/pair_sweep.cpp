#include "round/pair_sweep.h"

#include "round/pair_trial.h"
#include "stages/fixed_point.h"
#include "stages/move_search.h"
#include "stages/step_code.h"

namespace kelvo {

PairSweep MakePairSweep(const Tile& tile, const PairModel& model, int codes_plane) {
  const TileParams& params = tile.params();
  return {&model,
          tile.Cells(kEstimate),
          tile.Cells(kBlurred),
          tile.Cells(kObserved),
          tile.Cells(kFloor),
          tile.Cells(codes_plane),
          params.Iteration,
          params.HalfStep,
          params.ScaleShift,
          TruncToInt(1.5f * params.GradientScale),
          tile.Has(KELVO_VARIANT_UNDO_ROUND_MOVES)};
}

namespace plain {
namespace {

// From iteration 3 on every pair has a unit of its own, by the code of its previous move.
int32_t UnitOf(const PairSweep& sweep, int32_t previous) {
  if (sweep.iteration <= 2) return sweep.unit;
  return TruncToInt(static_cast<float>(sweep.unit) * StepFactor(CodeOf(previous)));
}

int32_t SearchPair(const PairSweep& sweep, int cell, int32_t previous) {
  PairTrial trial(sweep, cell, UnitOf(sweep, previous));
  const bool later = sweep.iteration >= 2;
  const int units = SearchMove(trial, later && previous < 0 ? -1 : 1, later);
  if (units != 0 && !sweep.undo) trial.Write(units);
  return CodeStep(sweep.iteration, sweep.half_step, previous, units);
}

}  // namespace

void PairRow(const PairSweep& sweep, int first, int stride, int count) {
  for (int cell = first; count > 0; --count, cell += stride) {
    const int32_t code = SearchPair(sweep, cell, LowHalf(sweep.codes[cell]));
    sweep.codes[cell] = WithLowHalf(sweep.codes[cell], code);
  }
}

}  // namespace plain
}  // namespace kelvo
