// The tables of routines that api/level_table.cpp makes, one per level that the library is built with.
#ifndef KELVO_API_LEVEL_TABLE_H
#define KELVO_API_LEVEL_TABLE_H

#include "stages/routines.h"
#include "stages/target.h"

namespace kelvo {

namespace plain {
extern const Routines kRoutines;
}
namespace baseline {
extern const Routines kRoutines;
}
namespace avx2 {
extern const Routines kRoutines;
}
namespace avx512 {
extern const Routines kRoutines;
}

}  // namespace kelvo

#endif  // KELVO_API_LEVEL_TABLE_H
