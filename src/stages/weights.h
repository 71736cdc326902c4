// The weight tables of a pass: how much a misfit and a roughness cost, by brightness.
//
// Both are unsigned fractions of 2^32. They follow the slope of the inverse tone curve, so that a linear difference
// counts as much as it is seen. They live in the first 8192 cells of kBlurred, above every row that the blur writes.
#ifndef KELVO_STAGES_WEIGHTS_H
#define KELVO_STAGES_WEIGHTS_H

#include <cstdint>

#include "stages/fixed_point.h"
#include "stages/tile.h"

namespace kelvo {

// By curve and linear value >> 16: 2^28 everywhere for curve 0; else 2^28 times the slope of the inverse tone curve
// over one step, 2^32 - 1 at entry 0.
extern const uint32_t kWeightSource[4][512];

// Fills cells 1..8191 of kBlurred from the source curve of CurveIndex: cells 1..511 a ramp that grows by 1.05 per cell
// toward cell 1 (at most 4000000000), cells 512..6143 the curve times Strength, cells 6144..8191 the curve itself; both
// are continued by their last value.
void BuildWeightTables(const Tile& tile);

// Weight of a misfit where the observed value >> 16 is `index`, 0..255. `table` is the first cell of kBlurred.
inline const int32_t* DataWeightTable(const int32_t* table) {
  return table + 6400;
}
inline uint32_t DataWeight(const int32_t* table, int32_t index) {
  return Bits(DataWeightTable(table)[index]);
}

// Weight of a roughness where the estimate >> 16 is `index`; clamped to the table, because a runaway estimate
// must not reach cells that this call never wrote.
inline constexpr int32_t kFirstSmoothness = -511, kLastSmoothness = 7679;
inline const int32_t* SmoothnessTable(const int32_t* table) {
  return table + 512;
}
inline uint32_t SmoothnessWeight(const int32_t* table, int32_t index) {
  return Bits(SmoothnessTable(table)[Clamp(index, kFirstSmoothness, kLastSmoothness)]);
}

}  // namespace kelvo

#endif  // KELVO_STAGES_WEIGHTS_H
