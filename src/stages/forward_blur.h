// Blur on purpose: a stencil over the tile's core, in linear light.
#ifndef KELVO_STAGES_FORWARD_BLUR_H
#define KELVO_STAGES_FORWARD_BLUR_H

#include "stages/stencil.h"
#include "stages/tile.h"

namespace kelvo {

// Blurs the core of kDisplay with the stencil; the core alone changes.
//   reads  kDisplay, grey levels;  writes  kDisplay, core, display values;  scratch  kEstimate
void BlurDisplay(const Tile& tile, const Stencil& blur);

}  // namespace kelvo

#endif  // KELVO_STAGES_FORWARD_BLUR_H
