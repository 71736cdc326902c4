// The round-blur family: one row of data per width. Start here for any width.
//
// What follows from the blur (its reach, the response of a move, the regions of the stages) is computed; what was tuned
// stands in the table of family.cpp.
#ifndef KELVO_ROUND_FAMILY_H
#define KELVO_ROUND_FAMILY_H

#include <cstdint>
#include <span>

#include "stages/stencils/disc.h"

namespace kelvo {

struct RoundMember {
  int width;            // 1..20
  int margin;           // region of staging
  int extra_margin;     // region of the pre-filter beyond `margin`
  int scale_shift;      // ScaleShift
  int final_margin;     // region of moves and of the extrapolation; floors reach one further
  int passes;           // 1, or 2: a coarse one on every second row and column, then a fine one
  bool has_shortcut;    // widths 1..6 may start from a sharpened tile; the others smooth what they observe
  int shortcut_margin;  // region of the sharpening
  int blur_margin;      // region of the blurred estimate
};

// The row of width 1..20.
const RoundMember& MemberOf(int width);

// The cells whose least blurred value is a pixel's floor: a disc wider than the blur's in the proportion 29 : 18 of
// squared radii, distances in cells of a plane.
std::span<const int16_t> FloorCells(int width);

}  // namespace kelvo

#endif  // KELVO_ROUND_FAMILY_H
