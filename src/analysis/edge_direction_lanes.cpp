// plain::EdgeDirections with neighbouring points side by side.
#include "analysis/edge_direction.h"
#include "analysis/edge_ring.h"
#include "stages/lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

static_assert(kEdgeGrid == 4 && kRingReach == 4);
constexpr int kMostPoints = 32;
constexpr int kRows = 2 * kRingReach + 1;

// The cells around the points of a row, each of four columns apart: cell (row, 4 i + phase - 4) from the first point is
// cells[row + 4][phase][i].
class Surroundings {
 public:
  Surroundings(const int32_t* first, int count) {
    for (int row = 0; row < kRows; ++row) {
      const int32_t* from = first + CellsTo(row - kRingReach, -kRingReach);
      for (int i = 0; i < count + 2; i += kLanes, from += 4 * kLanes) Split(from, cells_[row], i);
    }
  }

  // The cells at a step from points i, i + 1, ..
  Vector At(CellStep step, int i) const {
    const int column = step.column + kRingReach;
    return Load(&cells_[step.row + kRingReach][column % 4][i + column / 4]);
  }

 private:
  static constexpr int kRoom = 48;  // 34 in whole vectors

  static void Split(const int32_t* from, int32_t (&row)[4][kRoom], int i) {
    const Vector a = Load(from), b = Load(from + kLanes), c = Load(from + 2 * kLanes), d = Load(from + 3 * kLanes);
    const Vector even_low = EvenLanes(a, b), even_high = EvenLanes(c, d);
    const Vector odd_low = OddLanes(a, b), odd_high = OddLanes(c, d);
    Store(&row[0][i], EvenLanes(even_low, even_high));
    Store(&row[1][i], EvenLanes(odd_low, odd_high));
    Store(&row[2][i], OddLanes(even_low, even_high));
    Store(&row[3][i], OddLanes(odd_low, odd_high));
  }

  int32_t cells_[kRows][4][kRoom];
};

struct PointLanes {
  using Word = Vector;
  static Vector Distance(Vector a, Vector b) { return Magnitude(a - b); }
};
using Rings = Ring<PointLanes>;

// The line that costs least so far.
struct Best {
  void Consider(const Rings& rings, int start, Vector number) {
    const Vector cost = rings.LineCost(start), less = LessSigned(cost, least);
    least = Select(less, cost, least);
    line = Select(less, number, line);
  }
  Vector least = All(INT32_MAX), line{};
};

// The rings turned by `positions` where the mask holds.
void Turn(Rings& rings, int positions, Vector mask) {
  Vector turned[kRing];
  for (int i = 0; i < kRing; ++i) turned[i] = Select(mask, rings.cells[(i + positions) % kRing], rings.cells[i]);
  for (int i = 0; i < kRing; ++i) rings.cells[i] = turned[i];
}

Vector BestLines(Rings& rings) {
  Best best;
  for (int line = 0; line < kCoarseLines; ++line)
    best.Consider(rings, kFirstLine + line * kLineStride, All(static_cast<uint32_t>(line)));
  const Vector coarse = best.line;
  Turn(rings, 2 * kLineStride, Less(All(1), coarse));
  Turn(rings, kLineStride, Equal(coarse & 1, All(1)));
  best.line = coarse * kLineStride + kFirstLine;
  const Vector middle = best.line;
  best.Consider(rings, kFirstLine - 1, middle - 1);
  best.Consider(rings, kFirstLine + 1, middle + 1);
  return best.line;
}

Vector DirectionsAt(const Surroundings& cells, int i) {
  Rings rings;
  Vector sum{}, low = All(INT32_MAX), high{};
  for (int k = 0; k < kRing; ++k) {
    const Vector cell = cells.At(kRingCells[k], i);
    rings.cells[k] = cell;
    sum += cell;
    low = Lesser(low, cell);
    high = Greater(high, cell);
  }
  const int16_t* tone = kInverseTone[kRingCurve];
  const Vector contrast = Gather16(tone, Lesser(high >> 12, All(4095))) - Gather16(tone, Lesser(low >> 12, All(4095)));
  const Vector flat = LessSigned(contrast, All(kLeastContrast));
  if (!Any(~flat)) return All(static_cast<uint32_t>(kNoEdge));
  rings.centre = cells.At({0, 0}, i);
  rings.mean = MulHigh(sum, All(0xAAAAAAABu)) >> 4;  // sum / 24
  const Vector line = BestLines(rings);
  const Vector direction = Select(Less(line, All(kEdgeDirections)), line, line - kEdgeDirections);
  return Select(flat, All(static_cast<uint32_t>(kNoEdge)), direction);
}

}  // namespace

void EdgeDirections(const int32_t* first, int32_t* directions, int count) {
  const Surroundings cells(first, count);
  int32_t found[kMostPoints];
  for (int i = 0; i < count; i += kLanes) Store(found + i, DirectionsAt(cells, i));
  for (int i = 0; i < count; ++i) directions[i] = found[i];
}

}  // namespace kelvo::KELVO_TARGET
