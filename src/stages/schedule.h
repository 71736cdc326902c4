// The schedule of a run: iteration counts, model flags, strengths and steps, from the fields that the host set.
#ifndef KELVO_STAGES_SCHEDULE_H
#define KELVO_STAGES_SCHEDULE_H

#include "stages/tile.h"

namespace kelvo {

// Bits of TileParams::ModelFlags.
inline constexpr uint32_t kAxisPairs = 4;      // horizontal and vertical pairs move
inline constexpr uint32_t kDiagonalPairs = 8;  // diagonal and anti-diagonal pairs move

// De-blocking level of a strength of JPEG compression: a tenth, truncated toward zero, at most 6.
int32_t JpegLevel(int32_t compression);

// First step of every run of width 1..20: sets CurveIndex, ModelFlags, IterationCount, ExtraIterations, ShortcutMode,
// JPGLevel and NoiseFloor from BlurSpec, Accuracy (out of -2..2: the nearest) and JPGCompression.
void SetUpSchedule(TileParams& params);

// First step of a pass (`pass` 1 or 2): sets Pass, ScaleShift, GainA, GainB, Strength, GradientScale and StepDivisor.
void SetUpPass(TileParams& params, int pass, int scale_shift);

// First step of iteration `iteration`, from 1: sets Iteration, Step and HalfStep; steps fall as 1 / iteration.
void SetUpIteration(TileParams& params, int iteration);

// Refinements of the current iteration, by width, Accuracy and Iteration, the same for both kinds of blur; may be
// negative. A run that starts from a sharpened tile (ShortcutMode 2; 0 for all motion) has none.
int RefineCount(const TileParams& params);

}  // namespace kelvo

#endif  // KELVO_STAGES_SCHEDULE_H
