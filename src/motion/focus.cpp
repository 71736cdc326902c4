#include "motion/focus.h"

#include "motion/iteration.h"
#include "motion/line.h"
#include "stages/copy.h"
#include "stages/output.h"
#include "stages/point_operator.h"
#include "stages/prefilter/prefilter.h"
#include "stages/restoration.h"
#include "stages/tone.h"

namespace kelvo {
namespace {

// Fills kStaged, kObserved and kEstimate with linear values from the display values in kStaged. Where the observed tile
// is smoothed, its surroundings are those of the smoother, unsmoothed: the outer rings of the blurred estimate read
// them, so they must come from this tile.
void StageMotion(const Tile& tile, const MotionMember& member) {
  const int margin = member.margin + member.extra_margin;
  ToneMapRegion(tile, kStaged, margin);
  CopyRegion(tile, kStaged, kObserved, margin);
  CopyRegion(tile, kStaged, kEstimate, margin);
  if (member.extra_margin != 0)
    ApplyPointOperator(tile, ObservedLineSmoother(member), kStaged, kObserved, member.margin);
}

}  // namespace

// Lines pass more of the waves across them than discs do; short ones turn the finest waves around.
FitFrame FitFrameOf(const MotionMember& member) {
  const int step = member.width <= 2 ? 4 : 5;
  return {BareLine(member), motion::LastColumn(member.width, member.angle), step, member.final_margin};
}

void FocusMotion(const Tile& tile, const MotionMember& member) {
  TileParams& params = tile.params();
  SetUpSchedule(params);
  const FitFrame fit = FitFrameOf(member);
  if (FitsAlone(tile)) return FinishWithFit(tile, fit, FitStart::kObserved);
  ClearPrefilterPlanes(tile);
  Prefilter(tile, member.margin, member.extra_margin);
  StageMotion(tile, member);
  BlurAlongLine(tile, member);
  FindLineFloor(tile, member);

  params.MotionState = member.angle;
  const StepKind first = member.passes == 2 ? StepKind::kCoarse : StepKind::kFine;
  RunPass(tile, StepPass(member, first), 1, member.scale_shift, params.IterationCount);
  if (member.passes == 2)
    RunPass(tile, StepPass(member, StepKind::kFine), 2, member.scale_shift, params.ExtraIterations);
  if (Fits(tile)) return FinishWithFit(tile, fit, FitStart::kEstimate);
  Extrapolate(tile, member.final_margin);
  OutputCore(tile, OutputBase::kEstimate);
}

}  // namespace kelvo
