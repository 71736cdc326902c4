#include "stages/routines.h"

#include "enlarge/rules.h"
#include "motion/step_sweep.h"
#include "round/pair_sweep.h"

namespace kelvo {

const Routines& PlainRoutines() {
  static constexpr Routines kRoutines = {plain::StencilRow,     plain::MinimumRow,   plain::PairRow,    plain::StepRow,
                                         plain::ShapeCornerRow, plain::FillNotchRow, plain::JoinLineRow};
  return kRoutines;
}

const Routines& BaselineRoutines() {
  static constexpr Routines kRoutines = {plain::StencilRow,     plain::MinimumRow,   plain::PairRow,    lanes::StepRow,
                                         plain::ShapeCornerRow, plain::FillNotchRow, plain::JoinLineRow};
  return kRoutines;
}

}  // namespace kelvo
