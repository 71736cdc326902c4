// Blurred minus observed, once for all searches of an iteration; included by the files that are compiled once per level.
#ifndef KELVO_STAGES_MISFIT_LANES_H
#define KELVO_STAGES_MISFIT_LANES_H

#include "stages/lanes.h"
#include "stages/move_sweep.h"

namespace kelvo::KELVO_TARGET {

// Fills the misfit's cells of the window, which has the columns of a vector at least. Returns whether all of them and the
// estimate lie within 2^29 of zero: whether sums of two of them and a move within 2^30 cannot wrap.
inline bool FillMisfit(const MoveSweep& sweep, const Window& window) {
  Vector largest{};
  for (int row = window.first_row; row < window.end_row; ++row)
    for (int done = 0; done < window.columns(); done += kLanes) {
      const int at = done + kLanes <= window.columns() ? done : window.columns() - kLanes;
      const int cell = CellsTo(row, window.first_column + at);
      const Vector misfit = Load(sweep.blurred + cell) - Load(sweep.observed + cell);
      Store(sweep.misfit + cell, misfit);
      largest |= Magnitude(misfit) | Magnitude(Load(sweep.estimate + cell));
    }
  return !Any(largest >> 29);
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_MISFIT_LANES_H
