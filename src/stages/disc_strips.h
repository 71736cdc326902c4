// The strips of blurs of discs (strips.h).
#ifndef KELVO_STAGES_DISC_STRIPS_H
#define KELVO_STAGES_DISC_STRIPS_H

#include "stages/strips.h"

namespace kelvo::KELVO_TARGET {

// Of the round width 1..20.
Strip DiscStrip(int width);

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_DISC_STRIPS_H
