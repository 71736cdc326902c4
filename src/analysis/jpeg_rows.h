// The arithmetic of the JPEG grid over rows of cells: residuals, even but for bit 0, which is set where nothing counts.
#ifndef KELVO_ANALYSIS_JPEG_ROWS_H
#define KELVO_ANALYSIS_JPEG_ROWS_H

#include <cstdint>

#include "kelvo/kelvo.h"
#include "stages/target.h"

namespace kelvo {

// Steps and how many they are: of every column to its left neighbour, over all rows so far, and of a row to the one
// above.
struct StepTally {
  uint32_t column_sums[KELVO_CORE_SIZE], column_counts[KELVO_CORE_SIZE];
  uint32_t row_sum, row_count;
};

namespace KELVO_TARGET {

// Makes residuals of smoothed cells.
void JpegResidualRow(const int32_t* display, int32_t* cells, int count);

// Sets bit 0 of the cells with strong detail and of all around them; `count` 0..KELVO_CORE_SIZE, in the rows of a tile.
// Intended: where an earlier strong neighbour has set it, a residual of exactly 7 levels counts as strong.
void LeaveOutStrongRow(int32_t* cells, int count);

// Adds a core row's steps; those to the row above in rows of a tile.
void CountStepsRow(const int32_t* cells, StepTally& tally);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_ANALYSIS_JPEG_ROWS_H
