#include "motion/step_sweep.h"

#include "motion/step_trial.h"

namespace kelvo::plain {

void MoveSteps(const StepSweep& sweep, const Window& window) {
  for (int row = window.first_row; row < window.end_row; ++row)
    SearchRow<StepTrial>(sweep, CellsTo(row, window.first_column), 1, window.columns());
}

}  // namespace kelvo::plain
