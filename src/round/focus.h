// Restores a tile from round blur: the one driver of all widths.
#ifndef KELVO_ROUND_FOCUS_H
#define KELVO_ROUND_FOCUS_H

#include "round/family.h"
#include "round/shortcut.h"
#include "stages/copy.h"
#include "stages/output.h"
#include "stages/prefilter/prefilter.h"
#include "stages/restoration.h"
#include "stages/routines.h"
#include "stages/stencils/isotropic.h"
#include "stages/tile.h"
#include "stages/tone.h"

namespace kelvo {

// Restores the core of kDisplay from the round blur of the block's width; the rest of the plane is context.
void FocusRound(const Tile& tile);

// Whether FocusRound restores this width yet.
constexpr bool RestoresRound(int width) {
  return width >= 1 && width <= 7;
}

// Fills kObserved, kEstimate and kStaged with linear values from the pre-filtered tile in kStaged. Widths with a
// shortcut observe the tile as it is and start from it, or from the sharpened one; the others observe a smoothed tile
// and start from the tile as it is. Returns false where the shortcut is the whole run and kEstimate holds display
// values.
bool StageRound(const Tile& tile, const RoundMember& member);

// The iterations and the end of the run, after staging. `Fine` is the stages of a fine pass.
template <class Fine>
void IterateRound(const Tile& tile, const RoundMember& member, const Fine& fine) {
  RunPass(tile, fine, 1, member.scale_shift, tile.params().IterationCount);
  Extrapolate(tile, member.final_margin);
  OutputCore(tile, OutputBase::kEstimate);
}

}  // namespace kelvo

#endif  // KELVO_ROUND_FOCUS_H
