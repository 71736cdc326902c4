#include "analysis/jpeg_grid.h"

#include <algorithm>
#include <array>

#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/schedule.h"
#include "stages/stencils/isotropic.h"

namespace kelvo {
namespace {

constexpr int kPhases = 8;
constexpr int kResidualMargin = 16;
constexpr int kSmoother = 4;  // strength of the smoother: the disc of 21 cells
constexpr int32_t kStrong = 7 * KELVO_LEVEL;
constexpr int32_t kLeftOut = 1;

// Strength by the ratio of the grid's steps to the mean step: that of the last row whose ratio is exceeded. Intended:
// uneven in both columns.
constexpr struct {
  double ratio;
  int32_t compression;
} kLadder[] = {
    {1.23, 2},  {1.32, 5},  {1.42, 7},  {1.53, 10}, {1.65, 12}, {1.77, 15}, {1.9, 17},  {2.04, 20},
    {2.24, 25}, {2.48, 30}, {2.82, 40}, {3.06, 50}, {3.34, 60}, {3.71, 70}, {3.91, 80},
};

// Wraps like all arithmetic here: the magnitude of the most negative value is itself.
constexpr int32_t Absolute(int32_t value) {
  return Signed(Magnitude(Bits(value)));
}

void BuildResidual(const Tile& tile) {
  const Region region(kResidualMargin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* display = tile.Row(kDisplay, row, region.first);
    int32_t* residual = tile.Row(kJpegResidual, row, region.first);
    tile.routines().stencil_row(Isotropic(kSmoother), display, residual, region.size());
    for (int i = 0; i < region.size(); ++i) residual[i] = Signed(Bits(WrapSub(residual[i], display[i])) & ~1u);
  }
}

void LeaveOut(int32_t* cells, int count) {
  for (int i = 0; i < count; ++i) cells[i] |= kLeftOut;
}

// End of the rows or columns that count: the core's end, or the picture's where that comes first.
int EndOfCounting(int32_t tile_start, int32_t image_size) {
  if (WrapAdd(tile_start, KELVO_CORE_SIZE) <= image_size) return kCoreEnd;
  return WrapAdd(WrapSub(image_size, tile_start), kCoreFirst);
}

// Intended: the test sees bit 0 that an earlier strong neighbour has set, so a residual of exactly 7 levels counts as
// strong there.
void LeaveOutStrongDetail(const Tile& tile, int row, int end_column) {
  int32_t* cells = tile.Row(kJpegResidual, row);
  for (int column = kCoreFirst; column < end_column; ++column)
    if (Absolute(cells[column]) > kStrong)
      for (int below = -1; below <= 1; ++below) LeaveOut(cells + below * kTileSize + column - 1, 3);
}

void MarkWhatIsLeftOut(const Tile& tile) {
  const TileParams& params = tile.params();
  const Region region(kResidualMargin);
  const int end_row = EndOfCounting(params.TileTop, params.ImageHeight);
  const int end_column = Clamp(EndOfCounting(params.TileLeft, params.ImageWidth), kCoreFirst, kCoreEnd);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* cells = tile.Row(kJpegResidual, row);
    if (row < kCoreFirst || row >= end_row) {
      LeaveOut(cells + region.first, region.size());
      continue;
    }
    LeaveOut(cells + region.first, kCoreFirst - region.first);
    LeaveOutStrongDetail(tile, row, end_column);
    LeaveOut(cells + end_column, region.end - end_column);
  }
}

struct Tally {
  std::array<uint32_t, KELVO_CORE_SIZE> sums, counts;  // by row or column of the core
};

// The steps between a core row's cells and those `before` cells earlier, added to sums and counts of their columns.
void CountSteps(const int32_t* row, int before, Tally& by_column) {
  for (int i = 0; i < KELVO_CORE_SIZE; ++i) {
    const uint32_t cell = Bits(row[i]), neighbour = Bits(row[i - before]);
    const uint32_t counts = ~(cell | neighbour) & 1u;
    by_column.sums[static_cast<size_t>(i)] += ShiftRight(Magnitude(cell - neighbour), 7) & (0u - counts);
    by_column.counts[static_cast<size_t>(i)] += counts;
  }
}

uint32_t SumOf(const std::array<uint32_t, KELVO_CORE_SIZE>& values) {
  uint32_t sum = 0;
  for (const uint32_t value : values) sum += value;
  return sum;
}

// Folds a tally to phases, makes each sum the mean step times the mean count, and adds them to `phase_sums`.
void AddNormalised(const Tally& tally, int32_t tile_start, int32_t (&phase_sums)[kPhases]) {
  uint32_t sums[kPhases] = {}, counts[kPhases] = {};
  for (uint32_t i = 0; i < KELVO_CORE_SIZE; ++i) {
    const uint32_t phase = (Bits(tile_start) + i) % kPhases;  // the non-negative remainder also of negative starts
    sums[phase] += tally.sums[i];
    counts[phase] += tally.counts[i];
  }
  const double mean_count = SumOf(tally.counts) / 8.0;
  for (int phase = 0; phase < kPhases; ++phase) {
    int32_t step = Signed(sums[phase]);
    if (counts[phase] != 0) step = TruncToInt(step * mean_count / counts[phase]);
    phase_sums[phase] = WrapAdd(phase_sums[phase], step);
  }
}

// First index of the greatest sum; 0 if all are negative, with -1 as the greatest.
struct Peak {
  int32_t phase, sum;
};

Peak PeakOf(const int32_t (&sums)[kPhases]) {
  Peak peak{0, -1};
  for (int32_t phase = 0; phase < kPhases; ++phase)
    if (sums[phase] > peak.sum) peak = {phase, sums[phase]};
  return peak;
}

}  // namespace

void DetectJpegGrid(const Tile& tile) {
  TileParams& params = tile.params();
  BuildResidual(tile);
  MarkWhatIsLeftOut(tile);
  Tally columns{}, rows{};
  for (int row = 0; row < KELVO_CORE_SIZE; ++row) {
    const int32_t* cells = tile.Row(kJpegResidual, kCoreFirst + row, kCoreFirst);
    CountSteps(cells, 1, columns);
    Tally in_row{};
    CountSteps(cells, kTileSize, in_row);
    rows.sums[static_cast<size_t>(row)] = SumOf(in_row.sums);
    rows.counts[static_cast<size_t>(row)] = SumOf(in_row.counts);
  }
  AddNormalised(columns, params.TileLeft, params.JPGColumnPhaseSums);
  AddNormalised(rows, params.TileTop, params.JPGRowPhaseSums);
  params.JPGTileCount = WrapAdd(params.JPGTileCount, 1);
  DecideJpegGrid(params);
}

void DecideJpegGrid(TileParams& params) {
  const Peak column = PeakOf(params.JPGColumnPhaseSums), row = PeakOf(params.JPGRowPhaseSums);
  uint32_t total = 0;
  for (int phase = 0; phase < kPhases; ++phase)
    total += Bits(params.JPGColumnPhaseSums[phase]) + Bits(params.JPGRowPhaseSums[phase]);
  const int32_t mean = Signed(total) >> 4;
  const double ratio = mean > 0 ? (WrapAdd(column.sum, row.sum) >> 1) / static_cast<double>(mean) : 1.0;
  params.JPGHorizontalOffset = column.phase;
  params.JPGVerticalOffset = row.phase;
  params.JPGCompression = 0;
  for (const auto& step : kLadder)
    if (ratio > step.ratio) params.JPGCompression = step.compression;
  params.JPGLevel = JpegLevel(params.JPGCompression);
}

}  // namespace kelvo
