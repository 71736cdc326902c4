#include "api/level_table.h"

#include "enlarge/rules.h"
#include "motion/step_sweep.h"
#include "round/pair_sweep.h"

namespace kelvo::KELVO_LEVEL {

const Routines kRoutines = {StencilRow,          MinimumRow,        MovePairs, MoveSteps, plain::ShapeCornerRow,
                            plain::FillNotchRow, plain::JoinLineRow};

}  // namespace kelvo::KELVO_LEVEL
