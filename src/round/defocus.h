// Round blur on purpose.
#ifndef KELVO_ROUND_DEFOCUS_H
#define KELVO_ROUND_DEFOCUS_H

#include "stages/tile.h"

namespace kelvo {

// Blurs the core of kDisplay in linear light with the disc of the block's width, 1..20; the core alone changes.
//   reads  kDisplay, grey levels;  writes  kDisplay, core, display values;  scratch  kEstimate
void DefocusRound(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_ROUND_DEFOCUS_H
