// The fit: gradient steps that make the blurred estimate agree with the tile as it was observed.
//
// With the blur K, the observed tile f and the estimate u, all in linear light, the fit descends on
//
//   1/2 |K u - f|^2  +  2^-s x sum over lines of (1/2 huber(slope of u) + 1/4 huber(bend of u))
//
// by gradient steps with momentum (Nesterov's, in the form of Beck and Teboulle, without restarts). A blur is the same
// turned by half, so K serves as its own transpose.
//
//   preconditioner  The gradient g becomes g + 8 (g - K g), which lifts what the blur weakens. A component that K
//                   multiplies by h then weighs (9 - 8 h) h^2, at most 27/16 (at h = 3/4) whatever the blur, so that
//                   one size of step serves all widths.
//   physical range  The estimate stays between black and white: dark and bright ground pins what the blur hides.
//   smoothness      Slopes (first differences) and bends (second ones) along rows, columns and, at half the weight,
//                   diagonals count in proportion up to a limit and no more beyond it, so that noise goes and edges
//                   stay. Bends keep slopes from turning into steps. The limit is in grey levels, as linear light at the
//                   brightness observed, and grows with the noise.
//   surroundings    Only misfits of region `margin` count, and of those the ones inside the picture; but the estimate is
//                   free as far as they reach, so that what lies outside need not be known.
//
// Momentum is stable as long as step x (9 - 8 h) (h^2 + t) stays below 4/3 for every wave, t being what smoothness
// weighs it by: 2^-s x the sum over lines of d / 2 + d^2 / 4, where d = 2 - 2 cosine.
#ifndef KELVO_STAGES_FIT_H
#define KELVO_STAGES_FIT_H

#include <cstdint>

#include "stages/stencil.h"
#include "stages/tile.h"

namespace kelvo {

// What a member brings to its fit.
struct FitFrame {
  Stencil blur;
  int reach;            // of the blur, 1..12 rows and columns
  int step;             // eighths of a gradient, while smoothness is weak
  int estimate_margin;  // region of the estimate that a search leaves
};

// How a run is fitted.
struct FitPlan {
  int iterations;    // 6..80
  int limit;         // of slopes and bends that count in proportion, 1/128 grey levels
  int smooth_shift;  // s
  int step;          // eighths of a gradient
  int margin;        // region of the misfits that count
};

// By Accuracy (iterations), by the larger of RemoveNoise and what JPGLevel stands for (smoothness), by the blur's reach.
FitPlan PlanFit(const TileParams& params, const FitFrame& frame);

inline bool Fits(const Tile& tile) {
  return tile.Has(KELVO_VARIANT_FIT);
}
inline bool FitsAlone(const Tile& tile) {
  return Fits(tile) && tile.Has(KELVO_VARIANT_FIT_ALONE);
}

// Where a fit starts: at the observed tile, or at the estimate that a search has left (with the observed tile around).
enum class FitStart { kObserved, kEstimate };

// The end of a run: fits the estimate and writes the core.
//
//   reads   kDisplay   any values: the observed tile, as long as no stage has written there
//           kEstimate  region estimate_margin if `start` is kEstimate, any values
//   writes  kDisplay   the core, 0..32767
//           kEstimate  the core: the result, 0..16711680; around it scratch
//           kBlurred, kObserved, kStaged, kClass, kMisfit  scratch
//   fields  Accuracy, RemoveNoise, JPGLevel, CurveIndex
void FinishWithFit(const Tile& tile, const FitFrame& frame, FitStart start);

}  // namespace kelvo

#endif  // KELVO_STAGES_FIT_H
