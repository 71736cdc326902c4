#include "api/level_table.h"

#include "analysis/edge_direction.h"
#include "analysis/jpeg_rows.h"
#include "analysis/width_fit.h"
#include "enlarge/reshape.h"
#include "motion/step_sweep.h"
#include "motion/tap_row.h"
#include "round/pair_sweep.h"
#include "stages/fit_rows.h"
#include "stages/prefilter/class_rows.h"
#include "stages/prefilter/filter_rows.h"
#include "stages/prefilter/residual_rows.h"
#include "stages/step_rows.h"
#include "stages/tone.h"

namespace kelvo::KELVO_TARGET {

const Routines kRoutines = {.stencil_row = StencilRow,
                            .stencil_area = StencilArea,
                            .minimum_row = MinimumRow,
                            .linear_row = LinearRow,
                            .display_row = DisplayRow,
                            .linear_between_row = LinearBetweenRow,
                            .display_between_row = DisplayBetweenRow,
                            .measure_rows = MeasureRows,
                            .mark_edge_row = MarkEdgeRow,
                            .mark_ringing_rows = MarkRingingRows,
                            .choose_filter_row = ChooseFilterRow,
                            .filter_rows = FilterRows,
                            .split_row = SplitRow,
                            .mark_crowd_row = MarkCrowdRow,
                            .limit_rows = LimitRows,
                            .damp_block_row = DampBlockRow,
                            .decode_row = DecodeRow,
                            .add_row = AddRow,
                            .reset_row = ResetRow,
                            .merge_row = MergeRow,
                            .damp_row = DampRow,
                            .move_pairs = MovePairs,
                            .move_steps = MoveSteps,
                            .add_tap_row = AddTapRow,
                            .edge_directions = EdgeDirections,
                            .fit_widths = FitWidths,
                            .jpeg_residual_row = JpegResidualRow,
                            .leave_out_strong_row = LeaveOutStrongRow,
                            .count_steps_row = CountStepsRow,
                            .reshape_blocks = ReshapeBlocks,
                            .fit_limit_row = FitLimitRow,
                            .fit_misfit_row = FitMisfitRow,
                            .fit_smooth_row = FitSmoothRow,
                            .fit_step_row = FitStepRow};

}  // namespace kelvo::KELVO_TARGET
