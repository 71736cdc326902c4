// Motion blur on purpose.
#ifndef KELVO_MOTION_DEFOCUS_H
#define KELVO_MOTION_DEFOCUS_H

#include "motion/family.h"
#include "stages/tile.h"

namespace kelvo {

// Blurs the core of kDisplay, which stands in the member's orientation, in linear light along the member's bare line;
// the core alone changes.
//   reads  kDisplay, grey levels;  writes  kDisplay, core, display values;  scratch  kEstimate
void DefocusMotion(const Tile& tile, const MotionMember& member);

}  // namespace kelvo

#endif  // KELVO_MOTION_DEFOCUS_H
