// A sweep of move searches over a row of cells: what all of them share, and the loop.
#ifndef KELVO_STAGES_MOVE_SWEEP_H
#define KELVO_STAGES_MOVE_SWEEP_H

#include <cstdint>

#include "stages/fixed_point.h"
#include "stages/move_search.h"
#include "stages/stencil.h"
#include "stages/step_code.h"
#include "stages/tile.h"
#include "stages/weights.h"

namespace kelvo {

// No response to a move exceeds this, in 1/65536: what a vector of searches may step by rests on it.
inline constexpr int kGreatestAmount = 1 << 17;

// Cells of a plane: rows first_row .. end_row - 1, columns first_column .. end_column - 1.
struct Window {
  int first_row, end_row, first_column, end_column;

  int rows() const { return end_row - first_row; }
  int columns() const { return end_column - first_column; }
  Window Widened(int by) const { return {first_row - by, end_row + by, first_column - by, end_column + by}; }
};

inline Window WindowOf(const Region& region) {
  return {region.first, region.end, region.first, region.end};
}

// Pointers are to the first cells of planes.
struct MoveSweep {
  int32_t* estimate;
  int32_t* blurred;  // its first 8192 cells are the weight tables
  const int32_t* observed;
  const int32_t* floor;
  int32_t *misfit, *kept_estimate;  // scratch, a plane each
  int32_t* codes;                   // the coded moves, low halves
  int iteration;                    // from 1
  int half_step;
  int scale_shift;
  int32_t unit;  // linear units of one step before ScaleShift: 1.5 x GradientScale, truncated
};

inline MoveSweep MakeMoveSweep(const Tile& tile, int codes_plane) {
  const TileParams& params = tile.params();
  return {tile.Cells(kEstimate),
          tile.Cells(kBlurred),
          tile.Cells(kObserved),
          tile.Cells(kFloor),
          tile.Cells(kMisfit),
          tile.Cells(kKeptEstimate),
          tile.Cells(codes_plane),
          params.Iteration,
          params.HalfStep,
          params.ScaleShift,
          TruncToInt(1.5f * params.GradientScale)};
}

// From iteration 3 on every cell has a unit of its own, by the code of its previous move.
inline int32_t UnitOf(const MoveSweep& sweep, int32_t previous) {
  if (sweep.iteration <= 2) return sweep.unit;
  return TruncToInt(static_cast<float>(sweep.unit) * StepFactor(CodeOf(previous)));
}

// The sign that a search tries first, and whether a reversal halves its unit.
inline int FirstSign(const MoveSweep& sweep, int32_t previous) {
  return sweep.iteration >= 2 && previous < 0 ? -1 : 1;
}
inline bool HalvesOnReversal(const MoveSweep& sweep) {
  return sweep.iteration >= 2;
}

inline int32_t CodeMove(const MoveSweep& sweep, int32_t previous, int units) {
  return CodeStep(sweep.iteration, sweep.half_step, previous, units);
}

// Weight of the roughness of a pixel with the trial value `value`. One below its floor is weighed as if half as far
// below.
inline uint32_t RoughnessWeight(const MoveSweep& sweep, uint32_t value, int32_t floor) {
  const int32_t below = Signed(value - Bits(floor)) >> 1;
  return SmoothnessWeight(sweep.blurred, Signed(value + Bits(below < 0 ? below : 0)) >> 16);
}

// Searches and codes the moves of `count` cells, `stride` apart, the first at cell `first` of the planes. A Trial is
// that of SearchMove, made from (sweep, cell, unit), and leaves with Finish(units) in the planes what is to stay.
template <class Trial, class Sweep>
void SearchRow(const Sweep& sweep, int first, int stride, int count) {
  for (int cell = first; count > 0; --count, cell += stride) {
    const int32_t previous = LowHalf(sweep.codes[cell]);
    Trial trial(sweep, cell, UnitOf(sweep, previous));
    const int units = SearchMove(trial, FirstSign(sweep, previous), HalvesOnReversal(sweep));
    trial.Finish(units);
    sweep.codes[cell] = WithLowHalf(sweep.codes[cell], CodeMove(sweep, previous, units));
  }
}

}  // namespace kelvo

#endif  // KELVO_STAGES_MOVE_SWEEP_H
