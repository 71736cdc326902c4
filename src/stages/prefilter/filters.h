// The filters that the pre-filter chooses from, and the choice of the smoother before classification.
#ifndef KELVO_STAGES_PREFILTER_FILTERS_H
#define KELVO_STAGES_PREFILTER_FILTERS_H

#include "stages/stencil.h"

namespace kelvo {

inline constexpr int kFilterRows = 6;
inline constexpr int kDirections = 8;  // 22.5 degrees apart, counter-clockwise from the row direction

// Filter of strength row 0..5. Directions 0..7 smooth along that direction, kDirections is the row's non-directional
// filter: the cell itself in row 0, Isotropic(row) in the others. Weights sum to one; rows grow from 3 to 37 cells.
const Stencil& PrefilterFilter(int row, int direction);

// The smoother of the tile on which directions are measured: by width and noise level for round blur, by noise level
// alone for motion blur. Fields out of range count as the nearest valid value (width 0 as 1), because the enlargement
// runs the pre-filter on fields that nobody checked.
const Stencil& PreSmoother(const TileParams& params);

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_FILTERS_H
