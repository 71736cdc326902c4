// What a step along the line does to the estimate and to the blurred estimate.
//
// The estimate changes by the operator's taps. The blurred estimate changes by fixed amounts, 65520 times the response
// of the member's model to the operator, whatever the step's size: a move is judged by a fixed probe of the blurred
// image. Intended.
#ifndef KELVO_MOTION_STEP_MODEL_H
#define KELVO_MOTION_STEP_MODEL_H

#include <array>
#include <cstdint>

#include "motion/step_shape.h"

namespace kelvo {

// The blurred cells that a step changes, in the order of their amounts, largest first. Distances are in cells of a
// plane, from the pixel.
struct StepSide {
  static constexpr int kLanes = 8;  // padded to whole vectors of cells with amount 0
  static constexpr int kMax = 64;   // cells, padded

  int16_t pixel;   // the moved cell whose observed value weighs this side's misfit: the one that moves most
  int16_t count;   // cells
  int16_t padded;  // the same, rounded up to whole vectors
  std::array<int16_t, kMax> cells;
  std::array<int32_t, kMax> amounts;  // magnitude of one unit's change
  int32_t total_amount;               // the sum of the amounts
};

struct StepModel : StepShape {
  int16_t shape;             // its number
  StepSide rising, falling;  // where the blurred estimate gains, and where it loses; of the same amounts, but for kUnit
  int16_t reach;             // rows and columns to any neighbour or any of their cells
};

// The model of a member's coarse or fine operator; width 1..3 have the fine one alone.
enum class StepKind { kFine, kCoarse };
const StepModel& StepModelOf(StepKind kind, const MotionMember& member);

}  // namespace kelvo

#endif  // KELVO_MOTION_STEP_MODEL_H
