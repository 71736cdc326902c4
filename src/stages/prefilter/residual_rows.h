// The arithmetic of residuals over rows of cells: see residual.h.
#ifndef KELVO_STAGES_PREFILTER_RESIDUAL_ROWS_H
#define KELVO_STAGES_PREFILTER_RESIDUAL_ROWS_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo::KELVO_TARGET {

// Adds what the filter took off, in quarters of a grey level, to the low bytes of `residual`.
void SplitRow(const int32_t* display, const int32_t* staged, int32_t* residual, int count);

// Flags the cells whose 3 x 3 block of residuals is a crowd; `residual` lies in its plane. Returns whether a
// cell is limited or to be: runaway contrasts may have set those flags before.
bool MarkCrowdRow(const int32_t* residual, int32_t* codes, int count);

// Flags the cells around crowds, in `rows` rows of `count` cells of the planes, and limits flagged residuals.
void LimitRows(int32_t* residual, int32_t* codes, int rows, int count);

// Damps residuals by the levels 0..8 of their columns plus that of their row.
void DampBlockRow(const int32_t* column_levels, int row_level, int32_t* residual, int count);

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_PREFILTER_RESIDUAL_ROWS_H
