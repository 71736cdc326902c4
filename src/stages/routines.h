// The routines that take the time, as one table of function pointers.
//
// A stage owns geometry: planes, regions, order. A routine owns arithmetic over plain arrays, and only routines come in
// several versions: one table per instruction set, chosen once per call and carried by the Tile. Every table gives the
// same bits.
#ifndef KELVO_STAGES_ROUTINES_H
#define KELVO_STAGES_ROUTINES_H

#include <cstdint>
#include <span>

#include "stages/cpu.h"
#include "stages/stencil.h"
#include "stages/step_rows.h"

namespace kelvo {

struct DetailThresholds;
class EdgeProfile;
struct FilterPlanes;
struct FitPace;
struct OperatorTap;
struct PairMoves;
struct StepSweep;
struct StepTally;
struct WidthFit;
struct Window;

struct Routines {
  // to[i] = the stencil's value at from + i, for i in 0 .. count - 1. The arrays must not overlap.
  void (*stencil_row)(const Stencil& stencil, const int32_t* from, int32_t* to, int count);

  // The same over rows that lie kTileSize apart in both arrays.
  void (*stencil_area)(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent);

  // to[i] = the least of 2000000000 and from[i + c] over all distances c in `cells`.
  void (*minimum_row)(std::span<const int16_t> cells, const int32_t* from, int32_t* to, int count);

  // The tone curves over rows (stages/tone.h).
  void (*linear_row)(const int32_t* table, const int32_t* from, int32_t* to, int count);
  void (*display_row)(const int16_t* table, const int32_t* from, int32_t* to, int count);
  void (*linear_between_row)(const int32_t* table, const int32_t* from, int32_t* to, int count);
  void (*display_between_row)(const int16_t* table, const int32_t* from, int32_t* to, int count);

  // The pre-filter's rows (stages/prefilter/class_rows.h).
  void (*measure_rows)(const int32_t* smoothed, int32_t* codes, int rows, int count);
  void (*mark_edge_row)(const int32_t* above, int32_t* codes, const int32_t* below, int count);
  void (*mark_ringing_rows)(int32_t* codes, int rows, int count);
  void (*choose_filter_row)(const DetailThresholds& thresholds, int32_t* codes, int count);

  // Filters the cells by their class codes (stages/prefilter/filter_rows.h).
  void (*filter_rows)(const FilterPlanes& planes, int rows, int columns);

  // The rows of residuals (stages/prefilter/residual_rows.h).
  void (*split_row)(const int32_t* display, const int32_t* staged, int32_t* residual, int count);
  bool (*mark_crowd_row)(const int32_t* residual, int32_t* codes, int count);
  void (*limit_rows)(int32_t* residual, int32_t* codes, int rows, int count);
  void (*damp_block_row)(const int32_t* column_levels, int row_level, int32_t* residual, int count);

  // Coded steps and moves (stages/step_rows.h).
  void (*decode_row)(const StepScale& scale, const int32_t* codes, int32_t* steps, int count);
  void (*add_row)(int32_t weight, const int32_t* from, int32_t* to, int count);
  void (*reset_row)(CodeReset reset, int32_t* cells, int count);
  void (*merge_row)(int32_t* cells, int count);
  void (*damp_row)(int32_t* cells, int count);

  // Searches and codes the moves of all pairs of an iteration (round/pair_sweep.h).
  void (*move_pairs)(const PairMoves& moves);

  // Searches and codes the steps along a motion of the cells of a window.
  void (*move_steps)(const StepSweep& sweep, const Window& window);

  // Applies steps along a motion, tap by tap (motion/tap_row.h).
  void (*add_tap_row)(const OperatorTap& tap, const int32_t* steps, int32_t* to, int count);

  // The directions of the edges through the points of a row (analysis/edge_direction.h).
  void (*edge_directions)(const int32_t* first, int32_t* directions, int count);

  // The widths that fit edge profiles (analysis/width_fit.h).
  void (*fit_widths)(const EdgeProfile* profiles, int count, WidthFit* fits, int32_t* scratch);

  // The rows of the JPEG grid (analysis/jpeg_rows.h).
  void (*jpeg_residual_row)(const int32_t* display, int32_t* cells, int count);
  void (*leave_out_strong_row)(int32_t* cells, int count);
  void (*count_steps_row)(const int32_t* cells, StepTally& tally);

  // The rules of the enlargement (enlarge/reshape.h).
  void (*reshape_blocks)(const int32_t* source, int32_t* scratch, int32_t* pixels);

  // The rows of the fit (stages/fit_rows.h).
  void (*fit_limit_row)(const int32_t* curve, int32_t limit, const int32_t* display, int32_t* limits, int count);
  void (*fit_misfit_row)(const int32_t* observed, int32_t* misfit, int count);
  void (*fit_smooth_row)(const int32_t* ahead, const int32_t* limit, int shift, int32_t* gradient, int count);
  void (*fit_step_row)(const int32_t* gradient, const int32_t* blurred, FitPace pace, int32_t* ahead, int32_t* estimate,
                       int count);
};

// The table of a level; Level::kPlain is what the others are checked against. Where the library was built without the
// level, that of the greatest below it.
const Routines& RoutinesOf(Level level);

// The table of BestLevel(): what the exports use.
const Routines& BestRoutines();

}  // namespace kelvo

#endif  // KELVO_STAGES_ROUTINES_H
