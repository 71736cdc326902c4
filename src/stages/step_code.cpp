#include "stages/step_code.h"

#include <cassert>

#include "stages/fixed_point.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

constexpr int kLeastCode = -8;  // from here down the factor is 0
constexpr int kGreatestCode = 15;
constexpr int kGreatestMantissa = 1023;

int32_t Scaled(int code, int32_t value) {
  return TruncToInt(StepFactor(code) * static_cast<float>(value));
}

// The code of a step that changed its sign: two lower, then lower still until the step is at most half_step.
int ShrunkenCode(int code, int32_t value, int half_step) {
  code -= 2;
  const int sign = value > 0 ? 1 : -1;
  while (sign * Scaled(code, value) > half_step) --code;
  return code < kLeastCode ? kLeastCode : code;
}

// The code of a step that kept its sign: higher by 1 or 2 if it is more than half, or twice, the previous one.
// `previous >> 1` rounds down, so the two signs differ for odd mantissas. Intended.
int GrownCode(int code, int32_t value, int32_t previous) {
  const bool more_than_half = value > 0 ? value > previous >> 1 : value < previous >> 1;
  const bool more_than_twice = value > 0 ? value > 2 * previous : value < 2 * previous;
  if (!more_than_half) return code;
  code += more_than_twice ? 2 : 1;
  return code > kGreatestCode ? kGreatestCode : code;
}

int NextCode(int code, int32_t previous, int32_t value, int half_step) {
  if (previous == 0) return code;
  if (value == 0) {
    if (previous >= -2 && previous <= 2) return code;
    return code - 1 < kLeastCode ? kLeastCode : code - 1;
  }
  const bool sign_changed = (previous < 0) != (value < 0);
  return sign_changed ? ShrunkenCode(code, value, half_step) : GrownCode(code, value, previous);
}

}  // namespace

// clang-format off
const float kStepFactors[32] = {
    1.0f,  1.4f,  2.0f,  2.8f,  4.0f,  5.7f,  8.0f,   11.0f,   // codes 0 .. 15
    16.0f, 22.0f, 32.0f, 45.0f, 64.0f, 91.0f, 128.0f, 181.0f,
    0.0f,  0.0f,  0.0f,  0.0f,  0.0f,  0.0f,  0.0f,   0.0f,    // codes -16 .. -1
    0.0f,  0.07f, 0.13f, 0.18f, 0.25f, 0.35f, 0.5f,   0.71f};
// clang-format on

// Searching for a smaller code may ask below -16.
float StepFactor(int code) {
  assert(code <= kGreatestCode);
  return code <= kLeastCode ? 0.0f : kStepFactors[code & 31];
}

int32_t CodeStep(int iteration, int half_step, int32_t previous, int32_t value) {
  value = Clamp(value, -kGreatestMantissa, kGreatestMantissa);
  if (iteration == 1) return value * 32;
  const int code = NextCode(CodeOf(previous), previous >> 5, value, half_step);
  return value * 32 + (code & 31);
}

StepScale StepScaleOf(const TileParams& params) {
  return {params.ScaleShift & 31, params.GradientScale};
}

int32_t DecodeStep(const TileParams& params, int32_t coded) {
  const int32_t scaled = Scaled(CodeOf(coded), coded >> 5);
  const int32_t shifted = Signed(Bits(scaled) << (params.ScaleShift & 31));
  return TruncToInt(static_cast<float>(shifted) * params.GradientScale);
}

void ResetCodes(const Tile& tile, int plane, CodeReset reset) {
  tile.routines().reset_row(reset, tile.Cells(plane), kPlaneCells);
}

void MergeHalves(const Tile& tile, int plane) {
  tile.routines().merge_row(tile.Cells(plane), kPlaneCells);
}

void DampCodes(const Tile& tile, int plane) {
  tile.routines().damp_row(tile.Cells(plane), kPlaneCells);
}

}  // namespace kelvo
