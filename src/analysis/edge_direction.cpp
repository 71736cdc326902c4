#include "analysis/edge_direction.h"

#include <algorithm>

#include "stages/fixed_point.h"
#include "stages/stencil.h"
#include "stages/tone_tables.h"

namespace kelvo {
namespace {

constexpr int kRing = 24;
constexpr int kHalf = kRing / 2;
constexpr int kLastStart = 15;  // lines are read from ring positions 2..13
constexpr int kCurve = 2;
constexpr int32_t kLeastContrast = 32 * KELVO_LEVEL;

// Clockwise from the top.
constexpr CellStep kRingCells[kRing] = {{-4, 0}, {-4, 1}, {-3, 2}, {-3, 3},  {-2, 3},  {-1, 4},  {0, 4},   {1, 4},
                                        {2, 3},  {3, 3},  {3, 2},  {4, 1},   {4, 0},   {4, -1},  {3, -2},  {3, -3},
                                        {2, -3}, {1, -4}, {0, -4}, {-1, -4}, {-2, -3}, {-3, -3}, {-3, -2}, {-4, -1}};

struct Ring {
  uint32_t cells[kRing + kLastStart];  // the first come again at the end
  uint32_t centre, mean, low, high;
};

Ring RingAround(const int32_t* point) {
  Ring ring{};
  uint32_t sum = 0;  // 24 values below 2^24
  ring.low = UINT32_MAX;
  for (int i = 0; i < kRing; ++i) {
    const uint32_t cell = Bits(point[CellsTo(kRingCells[i].row, kRingCells[i].column)]);
    ring.cells[i] = cell;
    sum += cell;
    ring.low = std::min(ring.low, cell);
    ring.high = std::max(ring.high, cell);
  }
  std::copy_n(ring.cells, kLastStart, ring.cells + kRing);
  ring.centre = Bits(*point);
  ring.mean = sum / kRing;
  return ring;
}

bool HasContrast(const Ring& ring) {
  return kInverseTone[kCurve][ring.high >> 12] - kInverseTone[kCurve][ring.low >> 12] >= kLeastContrast;
}

constexpr uint32_t Distance(uint32_t a, uint32_t b) {
  return a > b ? a - b : b - a;
}

// The half ring q[0..11] between two ends of the line: t steps from an end its value should lie between the centre and
// the level of the side, which positions 5..7 give. Misfits count more near the line; far from it the spread about the
// ring's mean is added. Intended: added, not taken away.
uint32_t SideCost(const uint32_t* q, uint32_t centre, uint32_t mean) {
  const uint32_t level = (q[5] + 2 * q[6] + q[7]) >> 2;
  const uint32_t expected[5] = {centre, centre - (centre >> 2) + (level >> 2), (level + centre) >> 1,
                                level - (level >> 2) + (centre >> 2), level - (level >> 3) + (centre >> 3)};
  uint32_t cost = Distance(q[0], expected[0]) >> 5;
  for (const int t : {1, kHalf - 1}) cost += Distance(q[t], expected[1]) >> 5;
  for (const int t : {2, 3, kHalf - 3, kHalf - 2}) {
    const uint32_t misfit = Distance(q[t], expected[std::min(t, kHalf - t)]);
    cost += (misfit >> 6) + (misfit >> 7) + (Distance(q[t], mean) >> 7);
  }
  for (const int t : {4, kHalf - 4}) cost += (Distance(q[t], expected[4]) >> 6) + (Distance(q[t], mean) >> 6);
  return cost;
}

// How badly a straight edge along ring positions `start` and `start` + 12 explains the ring.
uint32_t LineCost(const Ring& ring, int start) {
  return SideCost(ring.cells + start, ring.centre, ring.mean) +
         SideCost(ring.cells + start + kHalf, ring.centre, ring.mean);
}

}  // namespace

int EdgeDirection(const int32_t* point) {
  const Ring ring = RingAround(point);
  if (!HasContrast(ring)) return kNoEdge;
  int best = 0;
  uint32_t least = UINT32_MAX;
  const auto consider = [&](int start) {
    const uint32_t cost = LineCost(ring, start);
    if (cost >= least) return;
    least = cost;
    best = start;
  };
  for (const int start : {3, 6, 9, 12}) consider(start);
  const int coarse = best;  // both neighbours are those of the coarse winner
  consider(coarse - 1);
  consider(coarse + 1);
  return best % kEdgeDirections;
}

}  // namespace kelvo
