// Maps a region of a plane from display values to linear light, in place.
//
//   reads, writes  `plane`, region `margin`: any values in, 0..16711680 out
//
// Only bits 7..14 count, the grey level: the fraction of a display value is dropped, unless the variant keeps it.
#ifndef KELVO_STAGES_TONE_H
#define KELVO_STAGES_TONE_H

#include "stages/tile.h"

namespace kelvo {

void ToneMapRegion(const Tile& tile, int plane, int margin);

// Linear value of a display value, by the block's curve.
int32_t ToLinear(const Tile& tile, int32_t display);

// Display value 0..32706 of a linear value, by the block's curve; values outside 0..16777215 count as the nearest.
int32_t ToDisplay(const Tile& tile, int32_t linear);

}  // namespace kelvo

#endif  // KELVO_STAGES_TONE_H
