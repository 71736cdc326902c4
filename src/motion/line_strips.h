// Blurs along lines over areas.
#ifndef KELVO_MOTION_LINE_STRIPS_H
#define KELVO_MOTION_LINE_STRIPS_H

#include "stages/stencil.h"
#include "stages/target.h"

namespace kelvo::KELVO_TARGET {

// See Routines::line_area.
void LineArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent);

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_MOTION_LINE_STRIPS_H
