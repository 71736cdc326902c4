// Stencils over areas: in strips where there is unrolled code for them, of discs and of lines, else row by row.
#include "motion/line_strips.h"
#include "stages/disc_strips.h"
#include "stages/stencil.h"

namespace kelvo::KELVO_TARGET {
namespace {

Strip StripOf(const Stencil& stencil) {
  if (stencil.disc != 0) return DiscStrip(stencil.disc);
  if (stencil.line != 0) return LineStrip(stencil.line - 1);
  return {};
}

}  // namespace

void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
  RunStrips(StripOf(stencil), stencil, from, to, extent);
}

}  // namespace kelvo::KELVO_TARGET
