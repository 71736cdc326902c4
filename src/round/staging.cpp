#include "round/staging.h"

#include "round/shortcut.h"
#include "stages/copy.h"
#include "stages/fit.h"
#include "stages/output.h"
#include "stages/point_operator.h"
#include "stages/stencils/isotropic.h"
#include "stages/tone.h"

namespace kelvo {
namespace {

// ShortcutMode 3: what stands in kEstimate is the result but for the detail that comes back.
void OutputShortcut(const Tile& tile, const RoundMember& member) {
  CopyRegion(tile, kEstimate, kDisplay, member.margin);
  OutputCore(tile, OutputBase::kDisplay);
}

}  // namespace

Staging StageRound(const Tile& tile, const RoundMember& member) {
  const int shortcut = tile.params().ShortcutMode;
  if (shortcut != 0) SharpenStaged(tile, member);
  if (shortcut == 3 && !Fits(tile)) {
    OutputShortcut(tile, member);
    return Staging::kFinished;
  }
  ToneMapRegion(tile, kStaged, member.margin);
  if (shortcut != 0)
    ToneMapRegion(tile, kEstimate, member.margin);
  else
    CopyRegion(tile, kStaged, kEstimate, member.margin);

  if (member.has_shortcut)
    CopyRegion(tile, kStaged, kObserved, member.margin);
  else
    ApplyPointOperator(tile, ObservedSmoother(member.width), kStaged, kObserved, member.margin);
  return Staging::kReady;
}

}  // namespace kelvo
