// The end of a run: the estimate is sharpened against its neighbourhood and becomes display values.
#ifndef KELVO_STAGES_OUTPUT_H
#define KELVO_STAGES_OUTPUT_H

#include "stages/tile.h"

namespace kelvo {

// Pushes kEstimate over region `margin` away from the staged tile (kStaged): by a quarter of the difference where it
// lies above the floor (kFloor) and by an eighth below it, where it is then brought to or over the floor. Intended:
// lopsided.
void Extrapolate(const Tile& tile, int margin);

// What OutputCore writes to the core of kDisplay before it gives detail back.
enum class OutputBase {
  kEstimate,  // the estimate, as display values
  kDisplay,   // what stands there
};

// Turns the core of kEstimate into display values, in place, and writes the core of kDisplay: the base plus three
// quarters of the detail in kResidual, clamped to 0..32767.
void OutputCore(const Tile& tile, OutputBase base);

}  // namespace kelvo

#endif  // KELVO_STAGES_OUTPUT_H
