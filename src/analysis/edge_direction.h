// Whether an edge runs through a point, and in which of twelve directions.
#ifndef KELVO_ANALYSIS_EDGE_DIRECTION_H
#define KELVO_ANALYSIS_EDGE_DIRECTION_H

#include <cstdint>

namespace kelvo {

inline constexpr int kEdgeDirections = 12;  // about 15 degrees apart, clockwise; 0 is a vertical edge
inline constexpr int kNoEdge = -1;

// `point` is a cell of a plane of linear values 0..16777215; 4 cells are read around it. kNoEdge if the ring of radius
// 4 spans less than 32 grey levels.
int EdgeDirection(const int32_t* point);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_DIRECTION_H
