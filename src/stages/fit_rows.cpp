#include "stages/fit_rows.h"

#include "stages/fixed_point.h"
#include "stages/stencil.h"
#include "stages/tone_tables.h"

namespace kelvo::KELVO_TARGET {
namespace {

// What the neighbours along a line, `step` cells apart, ask of a cell, in quarters: half of the limited slopes to both
// sides, and a quarter of the limited bends here and, with the other sign, there.
int32_t PullAlong(const int32_t* cell, int step, int32_t limit) {
  const int32_t back = cell[-step], here = *cell, next = cell[step];
  const int32_t slope0 = back - cell[-2 * step], slope1 = here - back, slope2 = next - here,
                slope3 = cell[2 * step] - next;
  const auto limited = [limit](int32_t value) { return Clamp(value, -limit, limit); };
  const int32_t nearest = limited(slope1) - limited(slope2) + limited(slope1 - slope2);
  return 2 * nearest - limited(slope0 - slope1) - limited(slope2 - slope3);
}

}  // namespace

void FitLimitRow(const int32_t* curve, int32_t limit, const int32_t* display, int32_t* limits, int count) {
  constexpr int kDarkest = 4;
  for (int i = 0; i < count; ++i) {
    const int level = Clamp((display[i] >> 7) & 255, kDarkest, 254);
    limits[i] = ((curve[level + 1] - curve[level]) * limit) >> 7;
  }
}

void FitMisfitRow(const int32_t* observed, int32_t* misfit, int count) {
  constexpr int32_t kTruncation = 64;
  for (int i = 0; i < count; ++i) {
    const int32_t difference = WrapSub(misfit[i], observed[i]);
    misfit[i] = difference - Clamp(difference, -kTruncation, kTruncation);
  }
}

void FitSmoothRow(const int32_t* ahead, const int32_t* limit, int shift, int32_t* gradient, int count) {
  for (int i = 0; i < count; ++i) {
    const int32_t pull = PullAlong(ahead + i, CellsTo(0, 1), limit[i]) + PullAlong(ahead + i, CellsTo(1, 0), limit[i]);
    const int32_t corner_pull =
        PullAlong(ahead + i, CellsTo(1, 1), limit[i]) + PullAlong(ahead + i, CellsTo(1, -1), limit[i]);
    const int32_t smoothness = (pull + (corner_pull >> 1)) >> (shift + 2);
    gradient[i] = Clamp(gradient[i] + smoothness, -kLinearWhite, kLinearWhite);
  }
}

void FitStepRow(const int32_t* gradient, const int32_t* blurred, FitPace pace, int32_t* ahead, int32_t* estimate,
                int count) {
  for (int i = 0; i < count; ++i) {
    const int32_t lifted = gradient[i] + (gradient[i] - blurred[i]) * 8;
    const int32_t next = Clamp(ahead[i] - ((lifted * pace.step) >> 3), 0, kLinearWhite);
    const int32_t gain = ((next - estimate[i]) * pace.momentum) >> 7;
    ahead[i] = Clamp(next + gain, 0, kLinearWhite);
    estimate[i] = next;
  }
}

}  // namespace kelvo::KELVO_TARGET
