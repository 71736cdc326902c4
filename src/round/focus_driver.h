// The run of a restoration from round blur: the one driver of all widths.
#ifndef KELVO_ROUND_FOCUS_DRIVER_H
#define KELVO_ROUND_FOCUS_DRIVER_H

#include "round/family.h"
#include "round/iteration.h"
#include "round/staging.h"
#include "stages/copy.h"
#include "stages/output.h"
#include "stages/prefilter/prefilter.h"
#include "stages/restoration.h"

namespace kelvo {

// `fine` is the stages of the member's fine pass (see stages/restoration.h); a benchmark may bring its own.
template <class Fine>
void RunRoundFocus(const Tile& tile, const RoundMember& member, const Fine& fine) {
  SetUpSchedule(tile.params());
  ClearPrefilterPlanes(tile);
  Prefilter(tile, member.margin, member.extra_margin);
  if (StageRound(tile, member) == Staging::kFinished) return;

  fine.Blur(tile);
  FindFloor(tile, member);
  RunPass(tile, fine, 1, member.scale_shift, tile.params().IterationCount);
  Extrapolate(tile, member.final_margin);
  OutputCore(tile, OutputBase::kEstimate);
}

}  // namespace kelvo

#endif  // KELVO_ROUND_FOCUS_DRIVER_H
