// Restores a tile from straight motion blur.
#ifndef KELVO_MOTION_FOCUS_H
#define KELVO_MOTION_FOCUS_H

#include "motion/family.h"
#include "stages/fit.h"
#include "stages/tile.h"

namespace kelvo {

// Restores the core of kDisplay, which stands in the member's orientation; the rest of the plane is context.
void FocusMotion(const Tile& tile, const MotionMember& member);

// What the fit needs to know of a member.
FitFrame FitFrameOf(const MotionMember& member);

}  // namespace kelvo

#endif  // KELVO_MOTION_FOCUS_H
