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
constexpr Plane kAhead = kStaged;      // the estimate, ahead by its momentum: where gradients are taken
constexpr Plane kGradient = kBlurred;  // 0 around region margin + reach
constexpr Plane kLimit = kClass;       // of slopes and bends that count in proportion, linear values

constexpr int kSmoothReach = 2;  // of the bends that smoothness reads

// All cells that the steps read.
void StageFit(const Tile& tile, const FitFrame& frame, const FitPlan& plan, FitStart start) {
  const Region region(plan.margin + frame.reach + std::max(frame.reach, kSmoothReach));
  const Region searched(frame.estimate_margin);
  const int count = region.size();
  for (int row = region.first; row < region.end; ++row) {
    const auto cells = [&tile, &region, row](int plane) { return tile.Row(plane, row, region.first); };
    ToLinearRow(tile, cells(kDisplay), cells(kObserved), count);
    tile.routines().fit_limit_row(kForwardTone[tile.params().CurveIndex], plan.limit, cells(kDisplay), cells(kLimit),
                                  count);
    std::copy_n(cells(kObserved), count, cells(kAhead));
    if (start == FitStart::kEstimate && row >= searched.first && row < searched.end)
      for (int column = searched.first; column < searched.end; ++column)
        tile.At(kAhead, row, column) = Clamp(tile.At(kEstimate, row, column), 0, kLinearWhite);
    std::copy_n(cells(kAhead), count, cells(kEstimate));
    std::fill_n(cells(kMisfit), count, 0);
    std::fill_n(cells(kGradient), count, 0);
  }
}

// Calls `work(row, rows)` for the rows of an area, a few at a time, so that what follows a blur finds it in the cache.
template <class Work>
void ForRows(const Area& area, Work work) {
  for (int row = area.first_row; row < area.end_row; row += kAreaRows)
    work(row, std::min(kAreaRows, area.end_row - row));
}

void FindMisfit(const Tile& tile, const Stencil& blur, const Area& area) {
  const int first = area.first_column, count = area.end_column - first;
  ForRows(area, [&](int row, int rows) {
    tile.routines().stencil_area(blur, tile.Row(kAhead, row, first), tile.Row(kMisfit, row, first), {rows, count});
    for (int end = row + rows; row < end; ++row)
      tile.routines().fit_misfit_row(tile.Row(kObserved, row, first), tile.Row(kMisfit, row, first), count);
  });
}

void FindGradient(const Tile& tile, const Stencil& blur, int smooth_shift, const Area& area) {
  const int first = area.first_column, count = area.end_column - first;
  ForRows(area, [&](int row, int rows) {
    tile.routines().stencil_area(blur, tile.Row(kMisfit, row, first), tile.Row(kGradient, row, first), {rows, count});
    for (int end = row + rows; row < end; ++row)
      tile.routines().fit_smooth_row(tile.Row(kAhead, row, first), tile.Row(kLimit, row, first), smooth_shift,
                                     tile.Row(kGradient, row, first), count);
  });
}

void Step(const Tile& tile, const Stencil& blur, FitPace pace, const Area& area) {
  const int first = area.first_column, count = area.end_column - first;
  int32_t blurred[kAreaRows * kTileSize];
  ForRows(area, [&](int row, int rows) {
    tile.routines().stencil_area(blur, tile.Row(kGradient, row, first), blurred, {rows, count});
    for (int i = 0; i < rows; ++i)
      tile.routines().fit_step_row(tile.Row(kGradient, row + i, first), blurred + i * kTileSize, pace,
                                   tile.Row(kAhead, row + i, first), tile.Row(kEstimate, row + i, first), count);
  });
}

Area AreaOf(int margin) {
  const Region region(margin);
  return {region.first, region.end, region.first, region.end};
}

// What of an area lies in region `margin`; may be empty.
Area Within(const Area& area, int margin) {
  const Region region(margin);
  Area both{std::max(region.first, area.first_row), std::min(region.end, area.end_row),
            std::max(region.first, area.first_column), std::min(region.end, area.end_column)};
  if (both.first_column >= both.end_column) both.end_row = both.first_row;
  return both;
}

// Of iteration i, from 0, in 1/128; it nears 1 as the steps go on.
constexpr int Momentum(int iteration) {
  return 128 * iteration / (iteration + 3);
}

// A step carries nothing farther than three blurs reach (smoothness looks two cells far), so the last ones need not be
// taken everywhere: `wanted` is the region whose cells the steps to come, or the result, still depend on.
void Fit(const Tile& tile, const FitFrame& frame, const FitPlan& plan, FitStart start) {
  Stencil blur = frame.blur;
  blur.product = Product::kSigned;  // misfits have a sign
  StageFit(tile, frame, plan, start);
  const Area observed = Within(tile.picture(), plan.margin);
  const int free = plan.margin + frame.reach;  // region of the estimate
  for (int iteration = 0; iteration < plan.iterations; ++iteration) {
    const int wanted = std::min(free, 3 * frame.reach * (plan.iterations - 1 - iteration));
    FindMisfit(tile, blur, Within(observed, std::min(plan.margin, wanted + 2 * frame.reach)));
    FindGradient(tile, blur, plan.smooth_shift, AreaOf(std::min(free, wanted + frame.reach)));
    Step(tile, blur, {plan.step, Momentum(iteration)}, AreaOf(wanted));
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
