// Steps applied to the estimate, a tap of the operator over a row at a time.
#ifndef KELVO_MOTION_TAP_ROW_H
#define KELVO_MOTION_TAP_ROW_H

#include <cstdint>

#include "motion/step_operator.h"
#include "stages/target.h"

namespace kelvo::KELVO_TARGET {

// Adds to to[i] what the tap's cell gains by the step steps[i], or takes what it loses; wraps. The arrays must not
// overlap.
void AddTapRow(const OperatorTap& tap, const int32_t* steps, int32_t* to, int count);

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_MOTION_TAP_ROW_H
