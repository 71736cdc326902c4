#include "stages/routines.h"

#include "api/level_table.h"
#include "enlarge/rules.h"
#include "motion/step_sweep.h"
#include "round/pair_sweep.h"

namespace kelvo {

namespace {

constexpr Routines kPlain = {plain::StencilRow,     plain::MinimumRow,   plain::MovePairs,  plain::MoveSteps,
                             plain::ShapeCornerRow, plain::FillNotchRow, plain::JoinLineRow};

}  // namespace

const Routines& RoutinesOf(Level level) {
#ifdef KELVO_HAS_AVX2
  if (level == Level::kAvx512) return avx512::kRoutines;
  if (level == Level::kAvx2) return avx2::kRoutines;
#endif
  return level == Level::kPlain ? kPlain : baseline::kRoutines;
}

const Routines& BestRoutines() {
  return RoutinesOf(BestLevel());
}

}  // namespace kelvo
