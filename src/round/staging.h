// From the pre-filtered tile to the planes that a restoration from round blur starts from.
#ifndef KELVO_ROUND_STAGING_H
#define KELVO_ROUND_STAGING_H

#include "round/family.h"
#include "stages/tile.h"

namespace kelvo {

enum class Staging { kReady, kFinished };

// Fills kStaged, kObserved and kEstimate with linear values over region margin, from the display values in kStaged.
// Widths with a shortcut observe the tile as it is and start from it, or from the sharpened one; the others observe a
// smoothed tile and start from the tile as it is. Where the shortcut is the whole run (ShortcutMode 3) the sharpened
// tile is written to kDisplay, and the run is finished.
Staging StageRound(const Tile& tile, const RoundMember& member);

}  // namespace kelvo

#endif  // KELVO_ROUND_STAGING_H
