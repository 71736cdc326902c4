#include "motion/iteration.h"

#include "motion/line.h"
#include "motion/step_sweep.h"
#include "stages/point_operator.h"
#include "stages/routines.h"
#include "stages/step_code.h"

namespace kelvo {

void BlurAlongLine(const Tile& tile, const MotionMember& member) {
  Stencil blur = ModelLine(member);
  if (tile.Has(KELVO_VARIANT_SIGNED_MOTION)) blur.product = Product::kSigned;
  ApplyPointOperator(tile, blur, kEstimate, kBlurred, member.blur_margin);
}

void FindLineFloor(const Tile& tile, const MotionMember& member) {
  FindMinimum(tile, ModelLineCells(member), kBlurred, kFloor, member.line_min_margin);
}

void StepPass::Move(const Tile& tile) const {
  const Region region(member_.final_margin);
  const StepSweep sweep{MakeMoveSweep(tile, kSteps), &StepModelOf(kind_, member_)};
  tile.routines().move_steps(sweep, WindowOf(region));
}

// Steps only add to the estimate, so their order is free.
void StepPass::Apply(const Tile& tile) const {
  const Region region(member_.final_margin);
  const OperatorTaps& taps = StepModelOf(kind_, member_).taps;
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* codes = tile.Row(kSteps, row);
    int32_t* estimate = tile.Row(kEstimate, row);
    for (int column = region.first; column < region.end; ++column) {
      const int32_t coded = LowHalf(codes[column]);
      if (coded != 0) AddStep(taps, estimate + column, DecodeStep(tile.params(), coded));
    }
  }
}

}  // namespace kelvo
