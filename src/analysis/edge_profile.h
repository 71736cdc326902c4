// The brightness across an edge: samples along a straight digital line through a point.
#ifndef KELVO_ANALYSIS_EDGE_PROFILE_H
#define KELVO_ANALYSIS_EDGE_PROFILE_H

#include <array>
#include <cstdint>

#include "stages/stencil.h"

namespace kelvo {

inline constexpr int kProfileReach = 32;
inline constexpr int kProfileSamples = 2 * kProfileReach + 1;

// Samples -32..32; sample 0 is the point's own.
class EdgeProfile {
 public:
  int32_t& operator[](int i) { return samples_[static_cast<size_t>(kProfileReach + i)]; }
  const int32_t& operator[](int i) const { return samples_[static_cast<size_t>(kProfileReach + i)]; }
  const int32_t* Sample(int i) const { return samples_.data() + kProfileReach + i; }

 private:
  static constexpr int kRoom = 15;  // for vectors that read beyond the last sample
  std::array<int32_t, kProfileSamples + kRoom> samples_;
};

// Where sample `i` in -32..32 across an edge of `direction` 0..11 lies, from the point.
CellStep ProfileStep(int direction, int i);

// What a width measured in samples must be multiplied with to be one in pixels: 1 .. 1.414.
double SampleSpacing(int direction);

// The profile at a cell of a plane, with 32 cells readable around it. Forced monotone outward from sample 0: rising if
// sample 5 is above sample -5, else falling.
EdgeProfile ProfileAt(const int32_t* point, int direction);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_PROFILE_H
