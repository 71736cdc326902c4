// The line of a motion blur: a box of width + 1 pixels along the angle, drawn in whole eighths of a column.
//
// Every column that the line covers has a weight, which the two cells share that the line's middle runs between. The
// restoration of widths 11..20 models a band around the line, because the tile that it fits has been smoothed: the
// band is a power-of-two stand-in for the smoothed line.
#ifndef KELVO_MOTION_LINE_H
#define KELVO_MOTION_LINE_H

#include <array>
#include <cstdint>
#include <span>

#include "motion/family.h"
#include "stages/stencil.h"

namespace kelvo {

// The blur of the member as defocus applies it: the bare line.
const Stencil& BareLine(const MotionMember& member);

// The blur as restoration models it: the bare line for widths 1..10, the band for widths 11..20. Its products are
// unsigned.
const Stencil& ModelLine(const MotionMember& member);

// The cells on which the model has weight, distances in cells of a plane: the floor is the least blurred value on them.
std::span<const int16_t> ModelLineCells(const MotionMember& member);

// The smoother of what widths 11..20 observe: 3 x 3 cells, a little stronger along the line.
const Stencil& ObservedLineSmoother(const MotionMember& member);

// The rest draws the lines at compile time.
namespace motion {

// Whole numbers on a square of cells around a pixel, by column to the right and row up.
template <class Number, int reach>
class Grid {
 public:
  static constexpr int kReach = reach;

  constexpr Number& At(int column, int up) { return cells_[Index(column, up)]; }
  constexpr Number At(int column, int up) const { return cells_[Index(column, up)]; }
  static constexpr bool Holds(int column, int up) {
    return column >= -reach && column <= reach && up >= -reach && up <= reach;
  }

 private:
  static constexpr size_t Index(int column, int up) {
    assert(Holds(column, up));
    return static_cast<size_t>((reach - up) * (2 * reach + 1) + column + reach);
  }

  std::array<Number, static_cast<size_t>((2 * reach + 1) * (2 * reach + 1))> cells_{};
};

inline constexpr int kLineReach = 13;
using LineGrid = Grid<int16_t, kLineReach>;

// The cells of a drawn line that have weight, row by row from the top, left to right.
struct LineCell {
  int16_t column, up, weight;
};
struct LineCells {
  std::array<LineCell, 160> cells{};
  int count = 0;
  int columns = 0, rows = 0;  // how far the line reaches
  int total = 0;              // of the weights
};

constexpr LineCells CellsOf(const LineGrid& line) {
  LineCells list;
  for (int up = kLineReach; up >= -kLineReach; --up)
    for (int column = -kLineReach; column <= kLineReach; ++column) {
      const int16_t weight = line.At(column, up);
      if (weight == 0) continue;
      list.cells[static_cast<size_t>(list.count++)] = {static_cast<int16_t>(column), static_cast<int16_t>(up), weight};
      list.total += weight;
      list.columns = column > list.columns ? column : list.columns;  // lines are symmetric
      list.rows = up > list.rows ? up : list.rows;
    }
  return list;
}

constexpr int TotalOf(const LineGrid& line) {
  return CellsOf(line).total;
}

// Puts `weight` into column `column` of the line that runs `above` rows above the centre line. The height at the
// column's centre decides the share of the two rows; the column keeps its whole weight whatever the rounding.
constexpr void Put(LineGrid& line, int angle, int column, int above, int weight) {
  const double height = column * Tangent(angle);
  const int row = Floor(height);
  const int upper = Round(weight * (height - row));
  line.At(column, row + above) = static_cast<int16_t>(line.At(column, row + above) + weight - upper);
  if (upper != 0) line.At(column, row + above + 1) = static_cast<int16_t>(line.At(column, row + above + 1) + upper);
}

// The box of width + 1 pixels, projected on the columns; the outermost may be covered in part.
constexpr LineGrid DrawBareLine(int width, int angle) {
  LineGrid line;
  for (int column = -kLineReach; column <= kLineReach; ++column) {
    const double rest = HalfLength(width, angle) + 0.5 - (column < 0 ? -column : column);
    const int weight = rest <= 0.0 ? 0 : Round(8.0 * (rest < 1.0 ? rest : 1.0));
    if (weight > 0) Put(line, angle, column, 0, weight);
  }
  return line;
}

// Lines side by side, the middle one strongest, each cut across the line and weaker for one step at its ends.
constexpr LineGrid DrawBand(int width, int angle, int extra_margin) {
  const double half = HalfLength(width, angle), tangent = Tangent(angle);
  const int lines = Round(extra_margin / Cosine(angle));
  LineGrid band;
  for (int above = -lines; above <= lines; ++above)
    for (int column = -kLineReach; column <= kLineReach; ++column) {
      const double along = column + above * tangent / (1.0 + tangent * tangent);
      const double distance = along < 0.0 ? -along : along;
      const int offset = above < 0 ? -above : above;
      int weight = 0;
      if (distance + 0.5 <= half)
        weight = offset == 0 ? 8 : offset == 1 ? 4 : 1;
      else if (distance <= half + 1.0)
        weight = offset <= 1 ? 2 : 1;
      if (weight > 0) Put(band, angle, column, above, weight);
    }
  return band;
}

constexpr LineGrid DrawModelLine(const MotionMember& member) {
  return member.extra_margin == 0 ? DrawBareLine(member.width, member.angle)
                                  : DrawBand(member.width, member.angle, member.extra_margin);
}

using LineBuilder = StencilBuilder<256, 4>;

constexpr int FloorLog2(int value) {
  int log = 0;
  while (value >> (log + 1) != 0) ++log;
  return log;
}

// The weights as a stencil. Every bit of the weights is one partial sum of the cells that have it; the shifts leave the
// total between two and four times a weight of one, which uses 32 bits well, and the normaliser does the rest.
constexpr LineBuilder IntegerForm(const LineGrid& weights) {
  const LineCells line = CellsOf(weights);
  const int log = FloorLog2(line.total), shift = line.total == 1 << log ? log : log - 1;
  LineBuilder builder;
  for (int bit = 3; bit >= 0; --bit) {
    bool open = false;
    for (size_t i = 0; i < static_cast<size_t>(line.count); ++i) {
      const LineCell& cell = line.cells[i];
      assert(cell.weight < 16);
      if ((cell.weight >> bit & 1) == 0) continue;
      if (!open) builder.Open(shift - bit);
      open = true;
      builder.Add(-cell.up, cell.column);
    }
  }
  return builder.Normalise();
}

constexpr LineBuilder BareLineOf(const MotionMember& member) {
  return IntegerForm(DrawBareLine(member.width, member.angle));
}

// An isotropic 8-5-2 smoother, in sixteenths, whose neighbour in direction a gains cos 2(a - angle) of one, rounded.
constexpr LineGrid DrawObservedSmoother(int angle) {
  const int16_t along_row = angle <= 30 ? 1 : 0, along_diagonal = angle >= 15 ? 1 : 0;
  LineGrid smoother;
  smoother.At(0, 0) = 8;
  for (const int side : {-1, 1}) {
    smoother.At(side, 0) = static_cast<int16_t>(5 + along_row);
    smoother.At(0, side) = static_cast<int16_t>(5 - along_row);
    smoother.At(side, side) = static_cast<int16_t>(2 + along_diagonal);
    smoother.At(-side, side) = static_cast<int16_t>(2 - along_diagonal);
  }
  return smoother;
}

}  // namespace motion

}  // namespace kelvo

#endif  // KELVO_MOTION_LINE_H
