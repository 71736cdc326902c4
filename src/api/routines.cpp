#include "stages/routines.h"

#include "api/level_table.h"

namespace kelvo {

const Routines& RoutinesOf(Level level) {
#ifdef KELVO_HAS_AVX2
  if (level == Level::kAvx512) return avx512::kRoutines;
  if (level == Level::kAvx2) return avx2::kRoutines;
#endif
  return level == Level::kPlain ? plain::kRoutines : baseline::kRoutines;
}

const Routines& BestRoutines() {
  return RoutinesOf(BestLevel());
}

}  // namespace kelvo
