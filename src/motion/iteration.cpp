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
  const StepScale scale = StepScaleOf(tile.params());
  for (int row = region.first; row < region.end; ++row) {
    int32_t steps[kTileSize];
    tile.routines().decode_row(scale, tile.Row(kSteps, row, region.first), steps, region.size());
    for (size_t k = 0; k < static_cast<size_t>(taps.count); ++k)
      tile.routines().add_tap_row(taps.taps[k], steps, tile.Row(kEstimate, row, region.first) + taps.taps[k].cell,
                                  region.size());
  }
}

}  // namespace kelvo
