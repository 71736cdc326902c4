// A stencil, or a minimum, over a region, from one plane to another.
#ifndef KELVO_STAGES_POINT_OPERATOR_H
#define KELVO_STAGES_POINT_OPERATOR_H

#include "stages/stencil.h"
#include "stages/tile.h"

namespace kelvo {

//   reads   plane `from`, region `margin` and the stencil's reach beyond
//   writes  plane `to`, region `margin`; another plane than `from`
void ApplyPointOperator(const Tile& tile, const Stencil& stencil, int from, int to, int margin);

// The least of 2000000000 and the cells at the distances `cells`, likewise.
void FindMinimum(const Tile& tile, std::span<const int16_t> cells, int from, int to, int margin);

}  // namespace kelvo

#endif  // KELVO_STAGES_POINT_OPERATOR_H
