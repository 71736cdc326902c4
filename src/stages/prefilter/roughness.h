// Roughness of a cell's 3 x 3 neighbourhood along eight directions.
#ifndef KELVO_STAGES_PREFILTER_ROUGHNESS_H
#define KELVO_STAGES_PREFILTER_ROUGHNESS_H

#include <cstdint>

namespace kelvo {

struct Roughness {
  int direction;   // 0..7, 22.5 degrees apart, counter-clockwise from the row direction: where the tile is least rough
                   // against the direction at right angles; ties go to the lower number
  int32_t along;   // roughness along it, display values
  int32_t across;  // roughness at right angles to it
};

// Measures around `cell` of a plane; reads its 8 neighbours.
Roughness MeasureRoughness(const int32_t* cell);

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_ROUGHNESS_H
