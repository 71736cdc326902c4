#include "motion/step_sweep.h"

#include "motion/step_trial.h"

namespace kelvo::plain {

void StepRow(const StepSweep& sweep, int first, int count) {
  SearchRow<StepTrial>(sweep, first, 1, count);
}

}  // namespace kelvo::plain
