// What a blur makes of a straight edge: the response of a unit step, by width.
#ifndef KELVO_ANALYSIS_EDGE_MODEL_H
#define KELVO_ANALYSIS_EDGE_MODEL_H

#include <cstdint>

namespace kelvo {

inline constexpr int kModelWidths = 27;  // 0..26
inline constexpr int kModelReach = 32;   // positions -32..31 are compared

// Cells from the edge beyond which the model of `width` has reached 0 or 1: at positions below -reach, and from reach
// on.
constexpr int ModelReach(int width) {
  return (width + 1) / 2;
}

// Samples on either side of the edge that a model is compared with, and in all: one more behind the edge.
constexpr int ComparedReach(int width) {
  return width + 2 > 4 ? width + 2 : 4;
}
constexpr int ComparedSamples(int width) {
  return 2 * ComparedReach(width) + 1;
}

// For positions -32..47, counted from the returned pointer: the share of the step, in units of 2^-16, that a round blur
// of `width` 0..26 has delivered there. Rising from 0 to 65536, symmetric about -0.5: positions j and -1 - j add up to
// 65536.
const int32_t* EdgeModel(int width);

// The compared samples cut into parts, mirrored: positions -to .. -from - 1 before the edge, and from .. to_behind - 1
// behind it.
struct ModelPart {
  int from, to, to_behind;
  float cells, cells_behind;
  float rise;  // the sum of the shares before the edge; behind it, what the shares lack of 1. 0 beyond the slope
};
inline constexpr int kLongestPart = 9;
inline constexpr int kMostParts = 5;
struct ModelParts {
  int slopes, count;  // the parts of the slope come first
  ModelPart part[kMostParts];
};

// Up to three parts of the slope and two beyond it, none of them empty.
const ModelParts& PartsOfModel(int width);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_MODEL_H
