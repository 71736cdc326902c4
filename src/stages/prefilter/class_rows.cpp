// Loops without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "stages/prefilter/class_rows.h"

#include <initializer_list>

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/residual.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {
namespace {

using namespace class_code;

// Roughness of a cell's 3 x 3 neighbourhood along eight directions.
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

struct Roughness {
  int direction;   // 0..7, 22.5 degrees apart, counter-clockwise from the row direction: where the tile is least rough
                   // against the direction at right angles; ties go to the lower number
  int32_t along;   // roughness along it, display values
  int32_t across;  // roughness at right angles to it
};

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
  Roughness rough{0, m[0], m[4]};
  int32_t best = 0;
  for (int k = 0; k < 8; ++k) {
    const int32_t gain = WrapSub(m[(k + 4) & 7], m[k]);
    const bool better = gain > best;
    best = better ? gain : best;
    rough.direction = better ? k : rough.direction;
    rough.along = better ? m[k] : rough.along;
    rough.across = better ? m[(k + 4) & 7] : rough.across;
  }
  return rough;
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

constexpr int kCrowdSum = 192;  // over a 3 x 3 block: more than 5 grey levels a cell

uint32_t ResidualSize(int32_t cell) {
  return Magnitude(Bits(ResidualByte(cell)));
}

}  // namespace

void MeasureRow(const int32_t* __restrict smoothed, int32_t* __restrict codes, int count) {
  for (int i = 0; i < count; ++i) {
    const Roughness rough = MeasureRoughness(smoothed + i);
    const int32_t contrast = rough.across >> 5, score = rough.along >> 7;
    codes[i] = Signed(Bits(rough.direction) | Bits(contrast > 511 ? 511 : contrast) << kContrastShift |
                      Bits(score > 31 ? 31 : score) << kScoreShift);
  }
}

void MarkEdgeRow(const int32_t* above, int32_t* codes, const int32_t* below, int count) {
  uint32_t beside[kTileSize + 2], over[kTileSize + 2];  // what is shed in the row, and above and below it
  beside[0] = over[0] = beside[count + 1] = over[count + 1] = 0;
  for (int i = 0; i < count; ++i) {
    beside[i + 1] = ShedFlag(Bits(codes[i]));
    over[i + 1] = 0;
  }
  for (const int32_t* row : {above, below})
    if (row != nullptr)
      for (int i = 0; i < count; ++i) over[i + 1] |= ShedFlag(Bits(row[i]));
  for (int i = 0; i < count; ++i)
    codes[i] = Signed(Bits(codes[i]) | OwnFlag(Bits(codes[i])) | beside[i] | beside[i + 2] | over[i] | over[i + 1] |
                      over[i + 2]);
}

void ChooseFilterRow(const DetailThresholds& thresholds, int32_t* __restrict codes, int count) {
  const int32_t* __restrict limits = thresholds.of;
  const int last_directional = thresholds.last_directional;
  for (int i = 0; i < count; ++i) {
    const uint32_t code = Bits(codes[i]) & ~(kRowMask << kRowShift | kDirectional);
    const int32_t contrast = Signed(code >> kContrastShift & kContrastMask);
    const int32_t threshold = limits[(code >> 13 & 7) | (code >> 20 & 56)];
    int row = 0;
    for (int halving = 0; halving < 5; ++halving) row += contrast <= threshold >> halving ? 1 : 0;
    const uint32_t directional = row >= 1 && row <= last_directional ? kDirectional : 0;
    codes[i] = Signed(code | Bits(row) << kRowShift | directional);
  }
}

void SplitRow(const int32_t* __restrict display, const int32_t* __restrict staged, int32_t* __restrict residual,
              int count) {
  for (int i = 0; i < count; ++i) {
    const int32_t taken = WrapAdd(WrapSub(display[i], staged[i]), 16) >> 5;
    residual[i] = Signed(Bits(residual[i]) | (Bits(Clamp(taken, -kGreatestResidual, kGreatestResidual)) & 255u));
  }
}

bool MarkCrowdRow(const int32_t* __restrict residual, int32_t* __restrict codes, int count) {
  uint32_t columns[kTileSize + 2];
  for (int i = 0; i < count + 2; ++i) {
    const int32_t* cell = residual + i - 1;
    columns[i] = ResidualSize(cell[-kTileSize]) + ResidualSize(cell[0]) + ResidualSize(cell[kTileSize]);
  }
  uint32_t any = 0;
  for (int i = 0; i < count; ++i) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): the loop above has filled two more than count
    const uint32_t over = columns[i] + columns[i + 1] + columns[i + 2] > kCrowdSum ? kOverLimit : 0;
    codes[i] = Signed(Bits(codes[i]) | over);
    any |= Bits(codes[i]) & (kOverLimit | kLimited);
  }
  return any != 0;
}

}  // namespace kelvo::KELVO_TARGET
