#include "stages/prefilter/roughness.h"

#include "stages/fixed_point.h"
#include "stages/tile.h"

namespace kelvo {
namespace {

uint32_t Difference(uint32_t a, uint32_t b) {
  return Magnitude(a - b);
}
uint32_t Bend(uint32_t a, uint32_t b, uint32_t c) {
  return Magnitude(a - 2 * b + c);
}
uint32_t Average(uint32_t a, uint32_t b) {
  return ShiftRight(a + b, 1);
}

// Roughness of three samples on a line.
uint32_t Line(uint32_t a, uint32_t b, uint32_t c) {
  return Difference(a, b) + Difference(b, c) + 2 * Bend(a, b, c);
}

int32_t LessPart(uint32_t sum, int sum_shift, int part_shift) {
  const int32_t value = Signed(sum) >> sum_shift;
  return WrapSub(value, value >> part_shift);
}

struct Block {
  uint32_t nw, n, ne, w, c, e, sw, s, se;
};

Block Load(const int32_t* cell) {
  const int32_t *up = cell - kTileSize, *down = cell + kTileSize;
  return {Bits(up[-1]),  Bits(up[0]),    Bits(up[1]),   Bits(cell[-1]), Bits(cell[0]),
          Bits(cell[1]), Bits(down[-1]), Bits(down[0]), Bits(down[1])};
}

// A diagonal through the middle cell `c`: its own line with the bend weighed 4, and the two pairs of side cells
// parallel to it, by their differences; three quarters.
int32_t Diagonal(uint32_t from, uint32_t c, uint32_t to, uint32_t side1, uint32_t side2) {
  const uint32_t line = Difference(from, c) + Difference(c, to) + 4 * Bend(from, c, to);
  return LessPart(line + side1 + side2, 2, 2);
}

// A direction between an axis and a diagonal: two lines from a side cell to a corner, which pass exactly between two
// cells in the middle; fifteen sixteenths.
int32_t Between(uint32_t line1, uint32_t line2) {
  return LessPart(line1 + line2, 2, 4);
}

}  // namespace

Roughness MeasureRoughness(const int32_t* cell) {
  const Block b = Load(cell);
  const int32_t m[8] = {
      Signed(Line(b.nw, b.n, b.ne) + 2 * Line(b.w, b.c, b.e) + Line(b.sw, b.s, b.se)) >> 3,
      Between(Line(b.w, Average(b.n, b.c), b.ne), Line(b.sw, Average(b.c, b.s), b.e)),
      Diagonal(b.sw, b.c, b.ne, Difference(b.w, b.n), Difference(b.s, b.e)),
      Between(Line(b.s, Average(b.c, b.e), b.ne), Line(b.sw, Average(b.w, b.c), b.n)),
      Signed(Line(b.nw, b.w, b.sw) + 2 * Line(b.n, b.c, b.s) + Line(b.ne, b.e, b.se)) >> 3,
      Between(Line(b.s, Average(b.w, b.c), b.nw), Line(b.se, Average(b.c, b.e), b.n)),
      Diagonal(b.nw, b.c, b.se, Difference(b.n, b.e), Difference(b.w, b.s)),
      Between(Line(b.w, Average(b.c, b.s), b.se), Line(b.nw, Average(b.n, b.c), b.e)),
  };
  int direction = 0;
  int32_t best = 0;
  for (int k = 0; k < 8; ++k) {
    const int32_t gain = WrapSub(m[(k + 4) & 7], m[k]);
    if (gain > best) {
      direction = k;
      best = gain;
    }
  }
  return {direction, m[direction], m[(direction + 4) & 7]};
}

}  // namespace kelvo
