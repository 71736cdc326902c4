// The run of a restoration from round blur: the one driver of all widths.
#ifndef KELVO_ROUND_FOCUS_DRIVER_H
#define KELVO_ROUND_FOCUS_DRIVER_H

#include "round/family.h"
#include "round/iteration.h"
#include "round/staging.h"
#include "stages/copy.h"
#include "stages/fit.h"
#include "stages/output.h"
#include "stages/prefilter/prefilter.h"
#include "stages/restoration.h"

namespace kelvo {

// What the fit needs to know of a width. The disc of width 1 passes more of the finest waves than the others.
inline FitFrame FitFrameOf(const RoundMember& member) {
  return {DiscBlur(member.width), DiscReach(member.width), member.width == 1 ? 5 : 6, member.final_margin};
}

// `coarse` and `fine` are the stages of the member's passes (see stages/restoration.h); a benchmark may bring its own.
// Members with one pass run the fine one alone.
template <class Pass>
void RunRoundFocus(const Tile& tile, const RoundMember& member, const Pass& coarse, const Pass& fine) {
  TileParams& params = tile.params();
  SetUpSchedule(params);
  const FitFrame fit = FitFrameOf(member);
  if (FitsAlone(tile)) return FinishWithFit(tile, fit, FitStart::kObserved);
  ClearPrefilterPlanes(tile);
  Prefilter(tile, member.margin, member.extra_margin);
  if (StageRound(tile, member) == Staging::kFinished) return;

  BlurEstimate(tile, member);
  FindFloor(tile, member);
  RunPass(tile, member.passes == 2 ? coarse : fine, 1, member.scale_shift, params.IterationCount);
  if (member.passes == 2) RunPass(tile, fine, 2, member.scale_shift, params.ExtraIterations);
  if (Fits(tile)) return FinishWithFit(tile, fit, FitStart::kEstimate);
  Extrapolate(tile, member.final_margin);
  OutputCore(tile, OutputBase::kEstimate);
}

}  // namespace kelvo

#endif  // KELVO_ROUND_FOCUS_DRIVER_H
