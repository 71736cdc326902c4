// Coded steps: a signed mantissa and a step code that adapts its size from iteration to iteration.
//
// A coded step is (mantissa << 5) | (code & 31): mantissa -1023..1023, code -16..15, signed. The code stands for the
// factor F(code), about a factor of sqrt 2 apart: 1 at code 0, 181 at 15, 0.07 at -7, 0 from -8 down. A step that keeps
// its sign grows, one that flips shrinks until it freezes at code -8. A cell of a coded plane holds two coded
// halves of 16 bits: the low half is current, the high half a copy that refinement keeps.
#ifndef KELVO_STAGES_STEP_CODE_H
#define KELVO_STAGES_STEP_CODE_H

#include <cstdint>

#include "stages/step_rows.h"
#include "stages/tile.h"

namespace kelvo {

// F(code) for code -16..15, single precision.
float StepFactor(int code);

// F(code) at code & 31.
extern const float kStepFactors[32];

// The signed low half of a cell of a coded plane.
constexpr int32_t LowHalf(int32_t cell) {
  return static_cast<int16_t>(cell);
}

// `cell` with its low half replaced by the coded step `code`.
constexpr int32_t WithLowHalf(int32_t cell, int32_t code) {
  return static_cast<int32_t>((static_cast<uint32_t>(cell) & 0xFFFF0000u) | (static_cast<uint32_t>(code) & 0xFFFFu));
}

// Signed step code -16..15 of a coded step.
constexpr int32_t CodeOf(int32_t coded) {
  return ((coded & 31) ^ 16) - 16;
}

// Codes the new step `value` (clamped to -1023..1023) of a pixel or pair whose previous coded step is `previous`.
// `iteration` counts from 1, where the code starts at 0; `half_step` bounds how large a reversed step may be.
int32_t CodeStep(int iteration, int half_step, int32_t previous, int32_t value);

// Linear units of a coded half, by the block's ScaleShift and GradientScale, in single precision, truncated.
int32_t DecodeStep(const TileParams& params, int32_t coded);
StepScale StepScaleOf(const TileParams& params);

// For every cell of a coded plane: clears (kClear) or halves (kHalve) the low half's code, then copies the low half
// to the high half.
void ResetCodes(const Tile& tile, int plane, CodeReset reset);

// For every cell of a coded plane: the low half takes the high half's mantissa and keeps its own code.
void MergeHalves(const Tile& tile, int plane);

// For every cell of a coded plane: lowers the low half's code where it is large: 9..12 by 1, 13 by 2, 14 by 2 and
// 15 by 3; codes up to 8 stay. Intended: the ladder is uneven.
void DampCodes(const Tile& tile, int plane);

}  // namespace kelvo

#endif  // KELVO_STAGES_STEP_CODE_H
