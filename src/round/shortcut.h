// The one-shot sharpening from which short runs of round widths 1..6 start.
#ifndef KELVO_ROUND_SHORTCUT_H
#define KELVO_ROUND_SHORTCUT_H

#include "round/family.h"
#include "stages/tile.h"

namespace kelvo {

// Unsharp mask with the member's own blur: pushes every pixel away from its blurred value by half, once or twice the
// difference for ShortcutMode 1, 2, 3, clamped to 0..32640.
//   reads  kStaged, region margin, display values;  writes  kEstimate, region shortcut_margin
void SharpenStaged(const Tile& tile, const RoundMember& member);

}  // namespace kelvo

#endif  // KELVO_ROUND_SHORTCUT_H
