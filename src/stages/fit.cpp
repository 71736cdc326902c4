#include "stages/fit.h"

#include <algorithm>
#include <initializer_list>

#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/tone.h"
#include "stages/tone_tables.h"

namespace kelvo {
namespace {

// The fit's names for planes that a search has done with.
constexpr int kAhead = kStaged;      // the estimate, ahead by its momentum: where gradients are taken
constexpr int kMisfit = kResidual;   // 0 around region margin
constexpr int kGradient = kBlurred;  // 0 around region margin + reach
constexpr int kLimit = kClass;       // of slopes and bends that count in proportion, linear values

constexpr int kDarkest = 4;  // grey level below which the limit falls no further

// One grey level around `display` in linear light.
int32_t LinearLevel(const TileParams& params, int32_t display) {
  const int level = Clamp((display >> 7) & 255, kDarkest, 254);
  const int32_t* curve = kForwardTone[params.CurveIndex];
  return curve[level + 1] - curve[level];
}

void StageFit(const Tile& tile, const FitFrame& frame, int limit, FitStart start) {
  const int32_t* display = tile.Cells(kDisplay);
  int32_t *observed = tile.Cells(kObserved), *ahead = tile.Cells(kAhead), *limits = tile.Cells(kLimit);
  for (int cell = 0; cell < kPlaneCells; ++cell) {
    observed[cell] = ahead[cell] = ToLinear(tile, display[cell]);
    limits[cell] = (LinearLevel(tile.params(), display[cell]) * limit) >> 7;
  }
  if (start == FitStart::kEstimate) {
    const Region region(frame.estimate_margin);
    for (int row = region.first; row < region.end; ++row)
      for (int column = region.first; column < region.end; ++column)
        tile.At(kAhead, row, column) = Clamp(tile.At(kEstimate, row, column), 0, kLinearWhite);
  }
  std::copy_n(ahead, kPlaneCells, tile.Cells(kEstimate));
  for (int plane : {kMisfit, kGradient}) std::fill_n(tile.Cells(plane), kPlaneCells, 0);
}

// Flat ground loses some units in the blur, by the truncation of its sums, and must not drift.
int32_t Misfit(int32_t blurred, int32_t observed) {
  constexpr int32_t kTruncation = 64;
  const int32_t misfit = WrapSub(blurred, observed);
  return misfit - Clamp(misfit, -kTruncation, kTruncation);
}

void FindMisfit(const Tile& tile, const Stencil& blur, const Area& area) {
  const int count = area.end_column - area.first_column;
  for (int row = area.first_row; row < area.end_row; ++row) {
    int32_t* misfit = tile.Row(kMisfit, row, area.first_column);
    const int32_t* observed = tile.Row(kObserved, row, area.first_column);
    tile.routines().stencil_row(blur, tile.Row(kAhead, row, area.first_column), misfit, count);
    for (int i = 0; i < count; ++i) misfit[i] = Misfit(misfit[i], observed[i]);
  }
}

// What of region `margin` lies in the picture; may be empty.
Area ObservedArea(const Tile& tile, int margin) {
  const Region region(margin);
  const Area& picture = tile.picture();
  Area area{std::max(region.first, picture.first_row), std::min(region.end, picture.end_row),
            std::max(region.first, picture.first_column), std::min(region.end, picture.end_column)};
  if (area.first_column >= area.end_column) area.end_row = area.first_row;
  return area;
}

void FindGradient(const Tile& tile, const Stencil& blur, int smooth_shift, const Region& region) {
  for (int row = region.first; row < region.end; ++row) {
    int32_t* gradient = tile.Row(kGradient, row, region.first);
    tile.routines().stencil_row(blur, tile.Row(kMisfit, row, region.first), gradient, region.size());
    tile.routines().fit_smooth_row(tile.Row(kAhead, row, region.first), tile.Row(kLimit, row, region.first),
                                   smooth_shift, gradient, region.size());
  }
}

void Step(const Tile& tile, const Stencil& blur, FitPace pace, const Region& region) {
  int32_t blurred[kTileSize];
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* gradient = tile.Row(kGradient, row, region.first);
    tile.routines().stencil_row(blur, gradient, blurred, region.size());
    tile.routines().fit_step_row(gradient, blurred, pace, tile.Row(kAhead, row, region.first),
                                 tile.Row(kEstimate, row, region.first), region.size());
  }
}

// Of iteration i, from 0, in 1/128; it nears 1 as the steps go on.
constexpr int Momentum(int iteration) {
  return 128 * iteration / (iteration + 3);
}

void Fit(const Tile& tile, const FitFrame& frame, const FitPlan& plan, FitStart start) {
  Stencil blur = frame.blur;
  blur.product = Product::kSigned;  // misfits have a sign
  StageFit(tile, frame, plan.limit, start);
  const Area observed = ObservedArea(tile, plan.margin);
  const Region region(plan.margin + frame.reach);
  for (int iteration = 0; iteration < plan.iterations; ++iteration) {
    FindMisfit(tile, blur, observed);
    FindGradient(tile, blur, plan.smooth_shift, region);
    Step(tile, blur, {plan.step, Momentum(iteration)}, region);
  }
}

}  // namespace

void FinishWithFit(const Tile& tile, const FitFrame& frame, FitStart start) {
  Fit(tile, frame, PlanFit(tile.params(), frame), start);
  const Region core(0);
  for (int row = core.first; row < core.end; ++row)
    for (int column = core.first; column < core.end; ++column)
      tile.At(kDisplay, row, column) = ToDisplay(tile, tile.At(kEstimate, row, column));
}

namespace plain {
namespace {

// What the neighbours along a line, `step` cells apart, ask of a cell, in quarters: half of the limited slopes to both
// sides, and a quarter of the limited bends here and, with the other sign, there.
int32_t PullAlong(const int32_t* cell, int step, int32_t limit) {
  const int32_t back2 = cell[-2 * step], back = cell[-step], here = *cell, next = cell[step], next2 = cell[2 * step];
  const auto limited = [limit](int32_t value) { return Clamp(value, -limit, limit); };
  const int32_t slopes = limited(here - back) + limited(here - next);
  const int32_t bends =
      2 * limited(2 * here - back - next) - limited(2 * back - back2 - here) - limited(2 * next - next2 - here);
  return 2 * slopes + bends;
}

}  // namespace

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

}  // namespace plain
}  // namespace kelvo
