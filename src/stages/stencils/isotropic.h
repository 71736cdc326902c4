// The non-directional smoothers of the pre-filter, and the smoothing operators of the observed tile.
#ifndef KELVO_STAGES_STENCILS_ISOTROPIC_H
#define KELVO_STAGES_STENCILS_ISOTROPIC_H

#include "stages/stencil.h"

namespace kelvo {

// Smoother of strength 1..5; its weights sum to one, and its footprint grows from 5 to 37 cells. In units of 1/8,
// 1/16, 1/32, 1/64 and 1/128, by class from the centre: 4 1; 4 2 1; 4 4 3; 4 4 4 3 2; 4 4 4 4 4 4 3 2.
// Strength 4 is a disc of 21 cells.
const Stencil& Isotropic(int strength);

// The operator that smooths the observed tile of round width 7..20, far narrower than the width's blur. Widths 8..12
// use the blur of width 1 or 2. Widths 16 and 17 serve the pre-filter too.
const Stencil& ObservedSmoother(int width);

}  // namespace kelvo

#endif  // KELVO_STAGES_STENCILS_ISOTROPIC_H
