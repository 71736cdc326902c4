// What stencils in vectors share.
#ifndef KELVO_STAGES_STENCIL_LANES_H
#define KELVO_STAGES_STENCIL_LANES_H

#include "stages/lanes.h"
#include "stages/stencil.h"

namespace kelvo::KELVO_TARGET {

// Lanes shifted arithmetically, right by `shift` or left by -shift.
inline Vector Shifted(Vector part, int shift) {
  return ShiftRightArithmetic(part << (shift < 0 ? -shift : 0), shift < 0 ? 0 : shift);
}

// Totals multiplied by the normaliser.
inline Vector Normalised(const Stencil& stencil, Vector total) {
  if (stencil.normaliser == 0) return total;
  const Vector factor = All(stencil.normaliser);
  return stencil.product == Product::kSigned ? MulHighSigned(total, factor) : MulHigh(total, factor);
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_STENCIL_LANES_H
