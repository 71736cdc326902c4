// Coded steps over rows of cells, and rows of moves added to the estimate.
#ifndef KELVO_STAGES_STEP_ROWS_H
#define KELVO_STAGES_STEP_ROWS_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// What a coded step is worth: DecodeStep's factors.
struct StepScale {
  int shift;       // 0..31
  float gradient;  // GradientScale
};

enum class CodeReset { kClear, kHalve };

namespace KELVO_TARGET {

// steps[i] = DecodeStep of the low half of codes[i].
void DecodeRow(const StepScale& scale, const int32_t* codes, int32_t* steps, int count);

// to[i] += weight * from[i]; wraps. The arrays must not overlap.
void AddRow(int32_t weight, const int32_t* from, int32_t* to, int count);

// ResetCodes, MergeHalves and DampCodes (stages/step_code.h) over `count` cells.
void ResetRow(CodeReset reset, int32_t* cells, int count);
void MergeRow(int32_t* cells, int count);
void DampRow(int32_t* cells, int count);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_STAGES_STEP_ROWS_H
