#include "round/focus.h"

#include "round/focus_driver.h"

namespace kelvo {

void FocusRound(const Tile& tile) {
  const RoundMember& member = MemberOf(BlurWidth(tile.params()));
  RunRoundFocus(tile, member, PairPass(member, PairKind::kCoarse), PairPass(member, PairKind::kFine));
}

}  // namespace kelvo
