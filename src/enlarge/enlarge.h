// Twofold enlargement of a tile's centre: every source pixel grows into a block of 2 x 2, then rules reshape corners.
//
// Output pixel (2 i + a, 2 j + b) of plane 0 stems from source pixel (64 + i, 64 + j), i and j 0..127, a and b 0..1.
// Rows and columns 62..193 are reshaped, the rest is plain doubling; the result of a call is the core, which stems from
// rows and columns 96..159 and depends on rows and columns 93..162.
#ifndef KELVO_ENLARGE_ENLARGE_H
#define KELVO_ENLARGE_ENLARGE_H

#include "stages/tile.h"

namespace kelvo {

// The whole run, as the export does it.
//
//   reads   kDisplay, any values; what the pre-filter reads of the block
//   writes  kDisplay: the enlargement; kEstimate, kPreSmoothed, kStaged, kResidual, kClass, kDoubledClass: scratch
//   fields  none is written
//
// Intended: the pre-filter runs at its full cost, and its classes are doubled, though no rule reads any of it.
void Enlarge(const Tile& tile);

// Enlarge without the pre-filter: the same kDisplay.
//
//   writes  kDisplay; kEstimate, kPreSmoothed: scratch
void EnlargeCentre(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_ENLARGE_ENLARGE_H
