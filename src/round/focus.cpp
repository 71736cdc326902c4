#include "round/focus.h"

#include "round/iteration.h"

namespace kelvo {
namespace {

void SmoothObserved(const Tile& tile, const RoundMember& member) {
  const Region region(member.margin);
  const Stencil& smoother = ObservedSmoother(member.width);
  for (int row = region.first; row < region.end; ++row)
    tile.routines().stencil_row(smoother, tile.Row(kStaged, row, region.first), tile.Row(kObserved, row, region.first),
                                region.size());
}

// ShortcutMode 3: what stands in kEstimate is the result but for the detail that comes back.
void OutputShortcut(const Tile& tile, const RoundMember& member) {
  CopyRegion(tile, kEstimate, kDisplay, member.margin);
  OutputCore(tile, OutputBase::kDisplay);
}

}  // namespace

bool StageRound(const Tile& tile, const RoundMember& member) {
  const int shortcut = tile.params().ShortcutMode;
  if (shortcut != 0) SharpenStaged(tile, member);
  if (shortcut == 3) return false;

  ToneMapRegion(tile, kStaged, member.margin);
  if (shortcut != 0)
    ToneMapRegion(tile, kEstimate, member.margin);
  else
    CopyRegion(tile, kStaged, kEstimate, member.margin);

  if (member.has_shortcut)
    CopyRegion(tile, kStaged, kObserved, member.margin);
  else
    SmoothObserved(tile, member);
  return true;
}

void FocusRound(const Tile& tile) {
  const RoundMember& member = MemberOf(BlurWidth(tile.params()));
  SetUpSchedule(tile.params());
  ClearPrefilterPlanes(tile);
  Prefilter(tile, member.margin, member.extra_margin);
  if (!StageRound(tile, member)) {
    OutputShortcut(tile, member);
    return;
  }
  const FinePass fine(member);
  fine.Blur(tile);
  FindFloor(tile, member);
  IterateRound(tile, member, fine);
}

}  // namespace kelvo
