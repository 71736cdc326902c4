// The calls of the exports with the routines as an argument: for the program and the tests, which may ask for a level.
#ifndef KELVO_API_CALLS_H
#define KELVO_API_CALLS_H

#include "kelvo/kelvo.h"
#include "stages/routines.h"

namespace kelvo {

enum class Operation { kDefocus, kFocus, kDetectBlurWidth, kDetectJpegGrid, kEnlarge };

// Empties the message, validates and, unless the block is refused, runs the operation. `heap` holds KELVO_HEAP_WORDS
// words; `variant` is the sum of KELVO_VARIANT_* bits, which kFocus alone heeds. Returns a KELVO_* result code.
int32_t Call(Operation operation, TileParams& params, int32_t* heap, const Routines& routines, uint32_t variant = 0);

}  // namespace kelvo

#endif  // KELVO_API_CALLS_H
