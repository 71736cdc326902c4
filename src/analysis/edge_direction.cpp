#include "analysis/edge_direction.h"

#include <algorithm>

#include "analysis/edge_ring.h"
#include "stages/fixed_point.h"

namespace kelvo::plain {
namespace {

struct OnePoint {
  using Word = uint32_t;
  static uint32_t Distance(uint32_t a, uint32_t b) { return a > b ? a - b : b - a; }
};

int DirectionAt(const int32_t* point) {
  Ring<OnePoint> ring;
  uint32_t sum = 0, low = UINT32_MAX, high = 0;  // 24 values below 2^24
  for (int i = 0; i < kRing; ++i) {
    const uint32_t cell = Bits(point[CellsTo(kRingCells[i].row, kRingCells[i].column)]);
    ring.cells[i] = cell;
    sum += cell;
    low = std::min(low, cell);
    high = std::max(high, cell);
  }
  if (kInverseTone[kRingCurve][high >> 12] - kInverseTone[kRingCurve][low >> 12] < kLeastContrast) return kNoEdge;
  ring.centre = Bits(*point);
  ring.mean = sum / kRing;

  int best = 0;
  uint32_t least = UINT32_MAX;
  const auto consider = [&](int start) {
    const uint32_t cost = ring.LineCost(start);
    if (cost >= least) return;
    least = cost;
    best = start;
  };
  for (int line = 0; line < kCoarseLines; ++line) consider(kFirstLine + line * kLineStride);
  const int coarse = best;  // both neighbours are those of the coarse winner
  consider(coarse - 1);
  consider(coarse + 1);
  return best % kEdgeDirections;
}

}  // namespace

void EdgeDirections(const int32_t* first, int32_t* directions, int count) {
  for (int i = 0; i < count; ++i) directions[i] = DirectionAt(first + i * kEdgeGrid);
}

}  // namespace kelvo::plain
