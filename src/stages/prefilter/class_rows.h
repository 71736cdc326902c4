// The arithmetic of the pre-filter over rows of cells. Bits of class codes: see classify.h.
#ifndef KELVO_STAGES_PREFILTER_CLASS_ROWS_H
#define KELVO_STAGES_PREFILTER_CLASS_ROWS_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// The contrasts up to which a cell's ground counts as flat, by its flags: edge bits 13..15 at bits 0..2 of the index,
// ringing bits 23..25 at bits 3..5. Clamped to -1..8191, which decides the same.
struct DetailThresholds {
  int32_t of[64];
  int last_directional;  // the last filter row with directional filters: 3 or 4
};

namespace KELVO_TARGET {

// Direction, contrast and edge score of `rows` rows of `count` cells of a plane, from the smoothed cells around each.
void MeasureRows(const int32_t* smoothed, int32_t* codes, int rows, int count);

// Adds the edge flags of a row: each cell's own and what its neighbours in the row and in those above and below shed.
// `above` and `below` may be null: then there are none.
void MarkEdgeRow(const int32_t* above, int32_t* codes, const int32_t* below, int count);

// Adds the ringing flags of `rows` rows of a plane, which contrasts in them shed.
void MarkRingingRows(int32_t* codes, int rows, int count);

// Filter row and directional flag of at least 16 cells, by contrast and flags.
void ChooseFilterRow(const DetailThresholds& thresholds, int32_t* codes, int count);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_CLASS_ROWS_H
