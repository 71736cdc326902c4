// Restores a tile from round blur.
#ifndef KELVO_ROUND_FOCUS_H
#define KELVO_ROUND_FOCUS_H

#include "stages/tile.h"

namespace kelvo {

// Restores the core of kDisplay from the round blur of the block's width, 1..20; the rest of the plane is context.
void FocusRound(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_ROUND_FOCUS_H
