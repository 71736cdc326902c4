// The rules of the enlargement: what becomes of a corner of a block, the 2 x 2 output pixels of one source pixel.
//
// Each rule is written once, for the north-west corner. It looks at the block's source pixel e and at the source pixels
// around it, and the compass says where those lie; turned, the same rule serves the other three corners.
//
//                 NNW  NN  NNE            corner   the output pixel that the rule is about
//            WWN   a   b   c              beside   its neighbour to the east, in the same block
//            WW    d   e   f              below    its neighbour to the south, in the same block
//            WWS   g   h   i              outside  its neighbour to the north-west, in the block of a
//
// A routine applies one rule to `count` blocks side by side: source[i] is the pixel e of block i, corner[i] (and so on)
// its output pixel. Source pixels are read up to two rows and columns away. The arrays of output pixels must not
// overlap one another nor the source pixels. Values are any 32 bits: sums wrap, divisions truncate toward zero.
#ifndef KELVO_ENLARGE_RULES_H
#define KELVO_ENLARGE_RULES_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// Distances in cells from a source pixel to its neighbours in the north and in the west, as the turned rule sees them.
// South and east lie opposite.
struct Compass {
  int north;
  int west;
};

namespace KELVO_TARGET {

// Rounds the corner of a bright or dark shape towards the nearer of b and d, unless e stands alone: an isolated peak
// keeps its block. Changes corner, beside and below.
void ShapeCornerRow(const int32_t* source, Compass compass, int32_t* corner, int32_t* beside, int32_t* below,
                    int count);

// Fills the corner where two flat arms meet around a notch. Changes corner.
void FillNotchRow(const int32_t* source, Compass compass, int32_t* corner, int count);

// Joins the blocks of b and d where they are part of a thin diagonal line. Changes corner and outside.
void JoinLineRow(const int32_t* source, Compass compass, int32_t* corner, int32_t* outside, int count);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_ENLARGE_RULES_H
