#include "stages/routines.h"

#include "enlarge/rules.h"
#include "motion/step_sweep.h"
#include "round/pair_sweep.h"
#include "stages/fit.h"

namespace kelvo {

namespace {

constexpr Routines kPlain = {plain::StencilRow,  plain::MinimumRow,     plain::PairRow,
                             plain::StepRow,     plain::ShapeCornerRow, plain::FillNotchRow,
                             plain::JoinLineRow, plain::FitSmoothRow,   plain::FitStepRow};

constexpr Routines MakeBaseline() {
  Routines routines = kPlain;
  routines.step_row = lanes::StepRow;
  return routines;
}

constexpr Routines kBaseline = MakeBaseline();

}  // namespace

const Routines& PlainRoutines() {
  return kPlain;
}

const Routines& BaselineRoutines() {
  return kBaseline;
}

}  // namespace kelvo
