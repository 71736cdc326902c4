// The sweep over the cells of a motion: every cell searches its step along the line and codes it.
//
// The search takes its moves back once the step is coded, so the planes stay as they are and no cell depends on what
// another found. Neighbouring cells can therefore be searched together, in the lanes of vectors.
#ifndef KELVO_MOTION_STEP_SWEEP_H
#define KELVO_MOTION_STEP_SWEEP_H

#include "motion/step_model.h"
#include "stages/move_sweep.h"
#include "stages/target.h"

namespace kelvo {

// What all cells of a sweep share. The estimate and the blurred estimate are read only.
struct StepSweep : MoveSweep {
  const StepModel* model;
};

// See Routines::move_steps.
namespace plain {

void MoveSteps(const StepSweep& sweep, const Window& window);

}  // namespace plain

namespace KELVO_TARGET {

void MoveSteps(const StepSweep& sweep, const Window& window);

}  // namespace KELVO_TARGET

}  // namespace kelvo

#endif  // KELVO_MOTION_STEP_SWEEP_H
