#include "stages/fit.h"

#include <algorithm>
#include <initializer_list>

#include "stages/fit_rows.h"
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
  ToLinearRow(tile, display, observed, kPlaneCells);
  std::copy_n(observed, kPlaneCells, ahead);
  for (int cell = 0; cell < kPlaneCells; ++cell)
    limits[cell] = (LinearLevel(tile.params(), display[cell]) * limit) >> 7;
  if (start == FitStart::kEstimate) {
    const Region region(frame.estimate_margin);
    for (int row = region.first; row < region.end; ++row)
      for (int column = region.first; column < region.end; ++column)
        tile.At(kAhead, row, column) = Clamp(tile.At(kEstimate, row, column), 0, kLinearWhite);
  }
  std::copy_n(ahead, kPlaneCells, tile.Cells(kEstimate));
  for (int plane : {kMisfit, kGradient}) std::fill_n(tile.Cells(plane), kPlaneCells, 0);
}

void FindMisfit(const Tile& tile, const Stencil& blur, const Area& area) {
  const int count = area.end_column - area.first_column;
  for (int row = area.first_row; row < area.end_row; ++row) {
    int32_t* misfit = tile.Row(kMisfit, row, area.first_column);
    const int32_t* observed = tile.Row(kObserved, row, area.first_column);
    tile.routines().stencil_row(blur, tile.Row(kAhead, row, area.first_column), misfit, count);
    tile.routines().fit_misfit_row(observed, misfit, count);
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
    ToDisplayRow(tile, tile.Row(kEstimate, row, core.first), tile.Row(kDisplay, row, core.first), core.size());
}

}  // namespace kelvo
