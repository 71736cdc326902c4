// Residuals: the detail that the pre-filter took away, one signed byte per cell, quarters of a grey level.
//
//   reads   kDisplay, kStaged  region margin
//   writes  kResidual          region margin, low byte; must be zero on entry
//           kClass             region margin, bits kLimited and kOverLimit
#ifndef KELVO_STAGES_PREFILTER_RESIDUAL_H
#define KELVO_STAGES_PREFILTER_RESIDUAL_H

#include "stages/tile.h"

namespace kelvo {

// Splits off kDisplay - kStaged, rounded to quarters of a level and clamped to -127..127; limits it where much was
// taken away at once; damps it by the strength of JPEG, more so at the borders of its 8 x 8 blocks.
void SplitResidual(const Tile& tile, int margin);

inline constexpr int32_t kGreatestResidual = 127;

// The residual byte of a cell of kResidual, -128..127.
constexpr int32_t ResidualByte(int32_t cell) {
  return ((cell & 255) ^ 128) - 128;  // unlike a conversion, one lane of a vector throughout
}

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_RESIDUAL_H
