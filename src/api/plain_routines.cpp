#include "round/pair_sweep.h"
#include "stages/routines.h"

namespace kelvo {

const Routines& PlainRoutines() {
  static constexpr Routines kRoutines = {plain::StencilRow, plain::MinimumRow, plain::PairRow};
  return kRoutines;
}

}  // namespace kelvo
