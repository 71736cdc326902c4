// Loops without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "stages/prefilter/class_rows.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/spread.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {
namespace {

using namespace class_code;

// The roughness of a cell's 3 x 3 neighbourhood along eight directions is made of lines of three samples, each of which
// serves several cells; so they are measured once per cell, for a row or for a pair of rows.
uint32_t Difference(uint32_t a, uint32_t b) {
  return Magnitude(a - b);
}
uint32_t Average(uint32_t a, uint32_t b) {
  return ShiftRight(a + b, 1);
}
uint32_t Bend(uint32_t a, uint32_t b, uint32_t c) {
  return Magnitude((a - b) - (b - c));
}
uint32_t Line(uint32_t a, uint32_t b, uint32_t c) {
  return Difference(a, b) + Difference(b, c) + 2 * Bend(a, b, c);
}

int32_t LessPart(uint32_t sum, int sum_shift, int part_shift) {
  const int32_t value = Signed(sum) >> sum_shift;
  return WrapSub(value, value >> part_shift);
}

using RowSums = uint32_t[kTileSize];

// Between a row and the one below it. Rising is from the lower left to the upper right.
struct RowPair {
  RowSums level;                        // the horizontal lines of both
  RowSums rising, falling;              // the line from a side cell to a corner, which passes between two middle cells
  RowSums rising_steps, falling_steps;  // the diagonal differences left and right of the column's middle
};

// `lines` are the horizontal lines of the upper row, and become those of the lower one.
void MeasurePair(const int32_t* __restrict upper, RowSums& lines, RowPair& pair, int count) {
  const int32_t* __restrict lower = upper + kTileSize;
  for (int i = 0; i < count; ++i) {
    const uint32_t nw = Bits(upper[i - 1]), n = Bits(upper[i]), ne = Bits(upper[i + 1]);
    const uint32_t sw = Bits(lower[i - 1]), s = Bits(lower[i]), se = Bits(lower[i + 1]);
    const uint32_t line = Line(sw, s, se), middle = Average(n, s);
    pair.level[i] = lines[i] + line;
    lines[i] = line;
    pair.rising[i] = Line(sw, middle, ne);
    pair.falling[i] = Line(nw, middle, se);
    pair.rising_steps[i] = Difference(sw, n) + Difference(s, ne);
    pair.falling_steps[i] = Difference(nw, s) + Difference(n, se);
  }
}

// Across a row, from the column before the first on.
struct ColumnSums {
  RowSums upright;          // the vertical line of the column
  RowSums rising, falling;  // the lines that pass between the column's cell and the one to the right of it
};

void MeasureColumns(const int32_t* __restrict middle, ColumnSums& sums, int count) {
  const int32_t* __restrict upper = middle - kTileSize, * __restrict lower = middle + kTileSize;
  for (int i = 0; i < count + 2; ++i) {
    const uint32_t nw = Bits(upper[i - 1]), n = Bits(upper[i]), w = Bits(middle[i - 1]), e = Bits(middle[i]);
    const uint32_t sw = Bits(lower[i - 1]), s = Bits(lower[i]), between = Average(w, e);
    sums.upright[i] = Line(nw, w, sw);
    sums.rising[i] = Line(sw, between, n);
    sums.falling[i] = Line(s, between, nw);
  }
}

// A diagonal through the middle cell: its own line with the bend weighed 4, and the two differences parallel to it;
// three quarters.
int32_t Diagonal(uint32_t steps, uint32_t bend) {
  return LessPart(steps + 4 * bend, 2, 2);
}

// A direction between an axis and a diagonal: fifteen sixteenths of two lines.
int32_t Between(uint32_t lines) {
  return LessPart(lines, 2, 4);
}

// Direction 0..7, 22.5 degrees apart, counter-clockwise from the row direction: where the tile is least rough against
// the direction at right angles; ties go to the lower number. The gain is how much: no sum of 32 bits shifted as above
// lets it overflow.
uint32_t ClassOf(const int32_t (&rough)[8]) {
  int direction = 0;
  int32_t along = rough[0], best = 0;
  for (int k = 0; k < 8; ++k) {
    const int32_t gain = rough[(k + 4) & 7] - rough[k];
    const bool better = gain > best;
    best = better ? gain : best;
    direction = better ? k : direction;
    along = better ? rough[k] : along;
  }
  const int32_t contrast = (along + best) >> 5, score = along >> 7;
  return Bits(direction) | Bits(contrast > 511 ? 511 : contrast) << kContrastShift |
         Bits(score > 31 ? 31 : score) << kScoreShift;
}

void ClassifyRow(const int32_t* __restrict middle, const RowPair& above, const RowPair& below, const ColumnSums& across,
                 int32_t* __restrict codes, int count) {
  const int32_t* __restrict upper = middle - kTileSize, * __restrict lower = middle + kTileSize;
  for (int i = 0; i < count; ++i) {
    const uint32_t c = Bits(middle[i]);
    const uint32_t rising_bend = Bend(Bits(lower[i - 1]), c, Bits(upper[i + 1]));
    const uint32_t falling_bend = Bend(Bits(upper[i - 1]), c, Bits(lower[i + 1]));
    const int32_t rough[8] = {Signed(above.level[i] + below.level[i]) >> 3,
                              Between(above.rising[i] + below.rising[i]),
                              Diagonal(above.rising_steps[i] + below.rising_steps[i], rising_bend),
                              Between(across.rising[i] + across.rising[i + 1]),
                              Signed(across.upright[i] + 2 * across.upright[i + 1] + across.upright[i + 2]) >> 3,
                              Between(across.falling[i] + across.falling[i + 1]),
                              Diagonal(above.falling_steps[i] + below.falling_steps[i], falling_bend),
                              Between(above.falling[i] + below.falling[i])};
    codes[i] = Signed(ClassOf(rough));
  }
}

// What a cell's edge score makes of it, and of the cells around it.
uint32_t OwnFlag(uint32_t code) {
  const uint32_t score = code >> kScoreShift;
  return score >= 8 ? kOnEdge : score >= 4 ? kByEdge : score == 3 ? kNearEdge : 0;
}
uint32_t ShedFlag(uint32_t code) {
  const uint32_t score = code >> kScoreShift;
  return score >= 8 ? kByEdge : score >= 4 ? kNearEdge : 0;
}

// JPEG rings within 4 cells of a contrast, and more weakly within 8 of a strong one: in bits 0..2 the flags of the near
// cells, in bits 4..6 those of the far ones.
constexpr uint32_t kFlat = 50;  // the greatest contrast of flat ground
constexpr SpreadStep kRingingSteps[] = {{1, 0x77, 0x77}, {1, 0x77, 0x77}, {2, 0x77, 0x77}, {4, 0x70, 0x70}};

uint32_t Contrast(uint32_t code) {
  return code >> kContrastShift & kContrastMask;
}

// What the cells' contrasts do to the ground around them.
void MarkContrasts(const int32_t* __restrict codes, uint8_t* __restrict marks, int count) {
  for (int i = 0; i < count; ++i) {
    const uint32_t contrast = Contrast(Bits(codes[i]));
    const uint32_t mark = contrast >= 201 ? 0x21 : contrast >= 101 ? 0x42 : contrast > kFlat ? 0x04 : 0;
    marks[i] = static_cast<uint8_t>(mark);
  }
}

// Only flat cells are marked: an edge must not raise its own threshold.
void MarkFlat(const uint8_t* __restrict marks, int32_t* __restrict codes, int count) {
  for (int i = 0; i < count; ++i) {
    const uint32_t code = Bits(codes[i]), mark = marks[i];
    codes[i] = Signed(code | (Contrast(code) <= kFlat ? ((mark | mark >> 4) & 7) * kRinging1 : 0));
  }
}

}  // namespace

void MeasureRows(const int32_t* smoothed, int32_t* codes, int rows, int count) {
  RowSums lines;
  RowPair pairs[2];  // the one above a row and the one below it, by turns
  ColumnSums across;
  const int32_t* first = smoothed - kTileSize;
  for (int i = 0; i < count; ++i) lines[i] = Line(Bits(first[i - 1]), Bits(first[i]), Bits(first[i + 1]));
  MeasurePair(first, lines, pairs[0], count);
  for (int row = 0; row < rows; ++row) {
    const int32_t* middle = smoothed + row * kTileSize;
    MeasurePair(middle, lines, pairs[~row & 1], count);
    MeasureColumns(middle, across, count);
    ClassifyRow(middle, pairs[row & 1], pairs[~row & 1], across, codes + row * kTileSize, count);
  }
}

void MarkEdgeRow(const int32_t* above, int32_t* codes, const int32_t* below, int count) {
  static constexpr int32_t kNone[kTileSize] = {};
  const int32_t* __restrict over = above != nullptr ? above : kNone;
  const int32_t* __restrict under = below != nullptr ? below : kNone;
  uint32_t beside[kTileSize + 2], across[kTileSize + 2];  // what is shed in the row, and above and below it
  beside[0] = across[0] = beside[count + 1] = across[count + 1] = 0;
  for (int i = 0; i < count; ++i) {
    beside[i + 1] = ShedFlag(Bits(codes[i]));
    across[i + 1] = ShedFlag(Bits(over[i])) | ShedFlag(Bits(under[i]));
  }
  for (int i = 0; i < count; ++i)
    codes[i] = Signed(Bits(codes[i]) | OwnFlag(Bits(codes[i])) | beside[i] | beside[i + 2] | across[i] | across[i + 1] |
                      across[i + 2]);
}

void MarkRingingRows(int32_t* codes, int rows, int count) {
  Spread spread(kRingingSteps, count);
  const int delay = spread.delay();
  for (int i = 0; i < rows + delay; ++i) {
    MarkRow& next = spread.Next();
    if (i < rows) MarkContrasts(codes + i * kTileSize, next.cells(), count);
    const MarkRow& row = spread.Pass();
    if (i >= delay) MarkFlat(row.cells(), codes + (i - delay) * kTileSize, count);
  }
}

}  // namespace kelvo::KELVO_TARGET
