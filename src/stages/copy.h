// Copies and clears: region to region, and whole planes.
#ifndef KELVO_STAGES_COPY_H
#define KELVO_STAGES_COPY_H

#include "stages/tile.h"

namespace kelvo {

// Copies region `margin` of plane `from` to plane `to`.
void CopyRegion(const Tile& tile, int from, int to, int margin);

// Zeroes the class and residual planes whole, as a run's pre-filter expects them.
void ClearPrefilterPlanes(const Tile& tile);

// Copies the estimate whole to kSaved, and back.
void SaveEstimate(const Tile& tile);
void RestoreEstimate(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_STAGES_COPY_H
