// The rows of the fit (stages/fit.h): what a step asks of neighbouring cells. The same text for every level.
#ifndef KELVO_STAGES_FIT_ROWS_H
#define KELVO_STAGES_FIT_ROWS_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// Of one step: eighths of the gradient, and 128ths of the last gain that the estimate goes ahead.
struct FitPace {
  int step, momentum;
};

namespace KELVO_TARGET {

// Of cells observed as `display`: `limit` / 128 grey levels as linear light at that brightness, by a table of
// kForwardTone. Below grey level 4 it falls no further.
void FitLimitRow(const int32_t* curve, int32_t limit, const int32_t* display, int32_t* limits, int count);

// Takes what is observed from the blurred cells in `misfit`. A difference counts by what it has over 64 either way: flat
// ground loses some units in the blur, by the truncation of its sums, and must not drift.
void FitMisfitRow(const int32_t* observed, int32_t* misfit, int count);

// Adds what smoothness asks of cells to their gradient: sum of pulls >> shift. Reads two cells around `ahead`, each
// 0..16711680. Gradients are within 16711680 either way, before and after.
void FitSmoothRow(const int32_t* ahead, const int32_t* limit, int shift, int32_t* gradient, int count);

// Takes a step against the gradient, given with its blur, both within 16711680 either way.
void FitStepRow(const int32_t* gradient, const int32_t* blurred, FitPace pace, int32_t* ahead, int32_t* estimate,
                int count);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_STAGES_FIT_ROWS_H
