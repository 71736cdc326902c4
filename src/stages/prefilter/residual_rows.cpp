// Loops without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "stages/prefilter/residual_rows.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/residual.h"
#include "stages/prefilter/spread.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {
namespace {

using class_code::kLimited;
using class_code::kOverLimit;

constexpr int kCrowdSum = 192;  // over a 3 x 3 block: more than 5 grey levels a cell

// A crowd limits the cells of a disc, row^2 + column^2 <= 32: three rectangles, 5, 4 and 2 cells to either side and
// 2, 4 and 5 up and down.
constexpr uint8_t kWide = 1, kMiddle = 2, kTall = 4;
constexpr SpreadStep kCrowdSteps[] = {{1, kWide | kMiddle | kTall, kWide | kMiddle | kTall},
                                      {1, kWide | kMiddle | kTall, kWide | kMiddle | kTall},
                                      {2, kWide | kMiddle, kMiddle | kTall},
                                      {1, kWide, kTall}};

uint32_t ResidualSize(int32_t cell) {
  return Magnitude(Bits(ResidualByte(cell)));
}

int32_t WithByte(int32_t cell, int32_t residual) {
  return Signed((Bits(cell) & ~255u) | (Bits(residual) & 255u));
}

int32_t Limited(int32_t residual) {
  for (int halving = 0; halving < 3; ++halving) residual = residual > 32 || residual < -32 ? residual >> 1 : residual;
  return residual < -kGreatestResidual ? -kGreatestResidual : residual;
}

int32_t Damped(int32_t residual, int level) {
  const int32_t shallow = level <= 1 ? residual : residual - (residual >> (level == 2 ? 2 : 1));
  const int32_t deep = level == 4 ? -(-residual >> 2) : 0;
  return level <= 3 ? shallow : deep;
}

void MarkCrowds(const int32_t* __restrict codes, uint8_t* __restrict marks, int count) {
  for (int i = 0; i < count; ++i) marks[i] = (Bits(codes[i]) & kOverLimit) != 0 ? kWide | kMiddle | kTall : 0;
}

void LimitRow(const uint8_t* __restrict near, int32_t* __restrict residual, int32_t* __restrict codes, int count) {
  for (int i = 0; i < count; ++i) {
    const uint32_t code = Bits(codes[i]) | (near[i] != 0 ? kLimited : 0);
    const int32_t limited = WithByte(residual[i], Limited(ResidualByte(residual[i])));
    codes[i] = Signed(code);
    residual[i] = (code & kLimited) != 0 ? limited : residual[i];
  }
}

}  // namespace

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

void LimitRows(int32_t* residual, int32_t* codes, int rows, int count) {
  Spread spread(kCrowdSteps, count);
  const int delay = spread.delay();
  for (int i = 0; i < rows + delay; ++i) {
    MarkRow& next = spread.Next();
    if (i < rows) MarkCrowds(codes + i * kTileSize, next.cells(), count);
    const MarkRow& row = spread.Pass();
    if (i >= delay) LimitRow(row.cells(), residual + (i - delay) * kTileSize, codes + (i - delay) * kTileSize, count);
  }
}

void DampBlockRow(const int32_t* __restrict column_levels, int row_level, int32_t* __restrict residual, int count) {
  for (int i = 0; i < count; ++i) {
    const int32_t damped = Damped(ResidualByte(residual[i]), column_levels[i] + row_level);
    residual[i] = WithByte(residual[i], Clamp(damped, -kGreatestResidual, kGreatestResidual));
  }
}

}  // namespace kelvo::KELVO_TARGET
