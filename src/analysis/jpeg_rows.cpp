// Loops without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "analysis/jpeg_rows.h"

#include "stages/fixed_point.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {
namespace {

constexpr int32_t kStrong = 7 * KELVO_LEVEL;

// The magnitude of a residual must exceed 7 levels; that of the most negative one is itself, and does not. Bit 0
// decides about two residuals: that one, and 7 levels.
bool IsStrong(int32_t cell) {
  return Signed(Magnitude(Bits(cell))) > kStrong;
}
bool HangsOnBit(int32_t cell) {
  const uint32_t residual = Bits(cell) & ~1u;
  return residual == Bits(kStrong) || residual == Bits(INT32_MIN);
}

void LeaveOutAround(int32_t* __restrict cells, const uint32_t* __restrict strong, int count) {
  for (int i = 0; i < count; ++i) cells[i] = Signed(Bits(cells[i]) | strong[i] | strong[i + 1] | strong[i + 2]);
}

// The step between two cells, and one if it counts, else zeros.
struct Step {
  Step(int32_t cell, int32_t neighbour)
      : count(~(Bits(cell) | Bits(neighbour)) & 1u),
        size(ShiftRight(Magnitude(Bits(cell) - Bits(neighbour)), 7) & (0u - count)) {}
  uint32_t count, size;
};

}  // namespace

void JpegResidualRow(const int32_t* __restrict display, int32_t* __restrict cells, int count) {
  for (int i = 0; i < count; ++i) cells[i] = Signed(Bits(WrapSub(cells[i], display[i])) & ~1u);
}

void LeaveOutStrongRow(int32_t* cells, int count) {
  uint32_t strong[KELVO_CORE_SIZE + 4];  // cell i is strong[i + 2]; two unset ones on either side
  uint32_t any = 0, hanging = 0;
  strong[0] = strong[1] = strong[count + 2] = strong[count + 3] = 0;
  for (int i = 0; i < count; ++i) {
    strong[i + 2] = IsStrong(cells[i]) ? 1 : 0;
    any |= strong[i + 2];
    hanging |= HangsOnBit(cells[i]) ? 1 : 0;
  }
  if (hanging != 0)
    for (int i = 0; i < count; ++i)
      if (HangsOnBit(cells[i])) any |= strong[i + 2] = IsStrong(Signed(Bits(cells[i]) | strong[i + 1])) ? 1 : 0;
  if (any == 0) return;
  for (int row = -1; row <= 1; ++row) LeaveOutAround(cells + row * kTileSize - 1, strong, count + 2);
}

void CountStepsRow(const int32_t* __restrict cells, StepTally& tally) {
  uint32_t* __restrict sums = tally.column_sums, * __restrict counts = tally.column_counts;
  uint32_t row_sum = 0, row_count = 0;
  for (int i = 0; i < KELVO_CORE_SIZE; ++i) {
    const Step left(cells[i], cells[i - 1]), up(cells[i], cells[i - kTileSize]);
    sums[i] += left.size;
    counts[i] += left.count;
    row_sum += up.size;
    row_count += up.count;
  }
  tally.row_sum = row_sum;
  tally.row_count = row_count;
}

}  // namespace kelvo::KELVO_TARGET
