// Whether edges run through points, and in which of twelve directions.
#ifndef KELVO_ANALYSIS_EDGE_DIRECTION_H
#define KELVO_ANALYSIS_EDGE_DIRECTION_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

inline constexpr int kEdgeDirections = 12;  // about 15 degrees apart, clockwise; 0 is a vertical edge
inline constexpr int kNoEdge = -1;
inline constexpr int kEdgeGrid = 4;  // every fourth cell of a row is a point

// directions[i] of the point first[4 i], a cell of a plane of linear values 0..16777215; 4 cells are read around it,
// and in its rows up to 64 more behind the last point. `count` 0..32. kNoEdge if the ring of radius 4 spans less than
// 32 grey levels.
namespace plain {
void EdgeDirections(const int32_t* first, int32_t* directions, int count);
}
namespace KELVO_TARGET {
void EdgeDirections(const int32_t* first, int32_t* directions, int count);
}

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_DIRECTION_H
