// The choice of the routine for a blur, and the turning of the tile around it.
#ifndef KELVO_API_DISPATCH_H
#define KELVO_API_DISPATCH_H

#include "stages/tile.h"

namespace kelvo {

// Blurs, or restores, the tile by the block's validated BlurSpec. Width 0 changes nothing (but for the scratch plane of
// a quarter turn).
void Defocus(const Tile& tile);
void Focus(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_API_DISPATCH_H
