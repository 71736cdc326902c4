// The ring of cells around a point, and how well lines through the point explain it; for one point or for several side
// by side.
#ifndef KELVO_ANALYSIS_EDGE_RING_H
#define KELVO_ANALYSIS_EDGE_RING_H

#include <cstdint>

#include "stages/stencil.h"
#include "stages/target.h"
#include "stages/tone_tables.h"

namespace kelvo {

inline constexpr int kRing = 24;
inline constexpr int kHalfRing = kRing / 2;
inline constexpr int kRingReach = 4;
inline constexpr int kRingCurve = 2;
inline constexpr int32_t kLeastContrast = 32 * KELVO_LEVEL;

// Lines are read from ring positions 2..13: first from these, then from the neighbours of the best.
inline constexpr int kFirstLine = 3, kLineStride = 3, kCoarseLines = 4;

namespace KELVO_TARGET {

// Clockwise from the top.
inline constexpr CellStep kRingCells[kRing] = {
    {-4, 0}, {-4, 1}, {-3, 2}, {-3, 3}, {-2, 3}, {-1, 4}, {0, 4},  {1, 4},   {2, 3},   {3, 3},   {3, 2},   {4, 1},
    {4, 0},  {4, -1}, {3, -2}, {3, -3}, {2, -3}, {1, -4}, {0, -4}, {-1, -4}, {-2, -3}, {-3, -3}, {-3, -2}, {-4, -1}};

// `Kind` gives the type Word, uint32_t or a vector of it, and the function Distance of two words below 2^24.
template <class Kind>
struct Ring {
  using Word = typename Kind::Word;
  Word cells[kRing];
  Word centre, mean;

  // How badly a straight edge along ring positions `start` and `start` + 12 explains the ring.
  Word LineCost(int start) const { return SideCost(start) + SideCost(start + kHalfRing); }

 private:
  // The half ring between two ends of the line, from `start` on: t steps from an end its value should lie between the
  // centre and the level of the side, which positions 5..7 give. Misfits count more near the line; far from it the
  // spread about the ring's mean is added. Intended: added, not taken away.
  Word SideCost(int start) const {
    const auto side = [this, start](int t) { return cells[(start + t) % kRing]; };
    const Word level = (side(5) + 2 * side(6) + side(7)) >> 2;
    const Word near = centre - (centre >> 2) + (level >> 2), half = (level + centre) >> 1,
               far = level - (level >> 2) + (centre >> 2), farthest = level - (level >> 3) + (centre >> 3);
    const auto steep = [](Word misfit) { return (misfit >> 6) + (misfit >> 7); };
    const auto both = [&side](int t, Word expected, auto cost) {
      return cost(side(t), expected) + cost(side(kHalfRing - t), expected);
    };
    const auto at_line = [](Word cell, Word expected) { return Kind::Distance(cell, expected) >> 5; };
    const auto beside = [&](Word cell, Word expected) {
      return steep(Kind::Distance(cell, expected)) + (Kind::Distance(cell, mean) >> 7);
    };
    const auto away = [&](Word cell, Word expected) {
      return (Kind::Distance(cell, expected) >> 6) + (Kind::Distance(cell, mean) >> 6);
    };
    return at_line(side(0), centre) + both(1, near, at_line) + both(2, half, beside) + both(3, far, beside) +
           both(4, farthest, away);
  }
};

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_ANALYSIS_EDGE_RING_H
