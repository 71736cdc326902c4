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

// What a restoration makes of a flat tile of `display` (0..32640): 0..32640. Runs that iterate go to linear light and
// back (RoundTrip); those that end with the shortcut stay within 3 of `display`. The difference of a result to this is
// what the restoration changed.
int32_t FlatResponse(const RoundMember& member, int shortcut_mode, int32_t display);

}  // namespace kelvo

#endif  // KELVO_ROUND_SHORTCUT_H
