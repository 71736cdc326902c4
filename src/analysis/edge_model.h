// What a blur makes of a straight edge: the response of a unit step, by width.
#ifndef KELVO_ANALYSIS_EDGE_MODEL_H
#define KELVO_ANALYSIS_EDGE_MODEL_H

#include <cstdint>

namespace kelvo {

inline constexpr int kModelWidths = 27;  // 0..26
inline constexpr int kModelReach = 32;   // positions -32..31

// Cells from the edge beyond which the model of `width` has reached 0 or 1: at positions below -reach, and from reach
// on.
constexpr int ModelReach(int width) {
  return (width + 1) / 2;
}

// For positions -32..31, counted from the returned pointer: the share of the step, in units of 2^-16, that a round blur
// of `width` 0..26 has delivered there. Rising from 0 to 65536, symmetric about -0.5: positions j and -1 - j add up to
// 65536.
const int32_t* EdgeModel(int width);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_MODEL_H
