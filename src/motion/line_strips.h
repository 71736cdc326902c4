// The strips of blurs along lines (stages/strips.h).
#ifndef KELVO_MOTION_LINE_STRIPS_H
#define KELVO_MOTION_LINE_STRIPS_H

#include "stages/strips.h"

namespace kelvo::KELVO_TARGET {

// Of the bare line of the member `index` of straight motion.
Strip LineStrip(int index);

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_MOTION_LINE_STRIPS_H
