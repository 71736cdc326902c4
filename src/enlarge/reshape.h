// All rules of the enlargement over all blocks of a tile.
#ifndef KELVO_ENLARGE_RESHAPE_H
#define KELVO_ENLARGE_RESHAPE_H

#include <cstdint>

#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo {

// The blocks that are reshaped: those of output rows and columns 62..193, one block more than the core on all sides, so
// that lines reach into the core from outside. Rules see two source pixels farther.
inline constexpr int kFirstPixel = kCoreFirst - 2;
inline constexpr int kBlocks = (kCoreEnd + 2 - kFirstPixel) / 2;
inline constexpr int kGridRing = 2;
inline constexpr int kGridSide = kBlocks + 2 * kGridRing;

// Makes 2 x 2 output pixels of every block. `source` is the first of kGridSide x kGridSide source pixels, `pixels` the
// first of 2 kBlocks x 2 kBlocks output pixels, both in rows of a tile; `scratch` a plane. None may overlap another.
// Values are any 32 bits: sums wrap, divisions truncate toward zero.
namespace plain {
void ReshapeBlocks(const int32_t* source, int32_t* scratch, int32_t* pixels);
}
namespace KELVO_TARGET {
void ReshapeBlocks(const int32_t* source, int32_t* scratch, int32_t* pixels);

// The same one block at a time, which the compiler may turn into vectors of the level.
void ReshapeWords(const int32_t* source, int32_t* scratch, int32_t* pixels);
}  // namespace KELVO_TARGET

}  // namespace kelvo

#endif  // KELVO_ENLARGE_RESHAPE_H
