#include <algorithm>

#include "stages/fit.h"
#include "stages/fixed_point.h"

namespace kelvo {
namespace {

// Smoothness by RemoveNoise -1..3; measured on photographs (docs/quality.md). The levels suit noise of about 0.3 (what
// is left of rounding to 8 bits), 0.5, 1, 2 and 3 to 6 grey levels.
struct Smoothness {
  int limit;  // 1/128 grey levels
  int shift;
};
constexpr Smoothness kSmoothness[5] = {{128, 7}, {288, 7}, {360, 6}, {700, 6}, {1400, 6}};

// The blocks of JPEG are noise as well: RemoveNoise is at least this, by JPGLevel.
constexpr int kJpegNoise[7] = {-1, 1, 2, 2, 3, 3, 3};

constexpr int kIterations[5] = {6, 10, 20, 40, 80};  // by Accuracy -2..2

}  // namespace

FitPlan PlanFit(const TileParams& params, const FitFrame& frame) {
  const int noise = std::max(params.RemoveNoise, kJpegNoise[Clamp(params.JPGLevel, 0, 6)]);
  const Smoothness& smoothness = kSmoothness[Clamp(noise, -1, 3) + 1];
  FitPlan plan{};
  plan.iterations = kIterations[Clamp(params.Accuracy, -2, 2) + 2];
  plan.limit = smoothness.limit;
  plan.smooth_shift = smoothness.shift;
  plan.step = smoothness.shift == 7 ? frame.step : frame.step - 2;
  plan.margin = std::min(16 + 4 * frame.reach, KELVO_CORE_START - 2 * frame.reach);
  return plan;
}

}  // namespace kelvo
