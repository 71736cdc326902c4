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

// Steps and how many they are, by column of the core.
struct ColumnTally {
  std::array<uint32_t, KELVO_CORE_SIZE> sums{}, counts{};
};

// The steps between a core row's cells and those `before` cells earlier.
void CountSteps(const int32_t* row, int before, ColumnTally& tally) {
  for (int i = 0; i < KELVO_CORE_SIZE; ++i) {
    const uint32_t cell = Bits(row[i]), neighbour = Bits(row[i - before]);
    const uint32_t counts = ~(cell | neighbour) & 1u;
    tally.sums[static_cast<size_t>(i)] += ShiftRight(Magnitude(cell - neighbour), 7) & (0u - counts);
    tally.counts[static_cast<size_t>(i)] += counts;
  }
}

class PhaseTally {
 public:
  // `position` in the image; & 7 is the non-negative remainder also of negative ones.
  void Add(uint32_t position, uint32_t sum, uint32_t count) {
    sums_[position & (kPhases - 1)] += sum;
    counts_[position & (kPhases - 1)] += count;
  }

  // Adds to each phase its mean step times the mean count.
  void AddNormalisedTo(int32_t (&phase_sums)[kPhases]) const {
    uint32_t all = 0;
    for (const uint32_t count : counts_) all += count;
    const double mean_count = all / 8.0;
    for (int phase = 0; phase < kPhases; ++phase) {
      int32_t step = Signed(sums_[phase]);
      if (counts_[phase] != 0) step = TruncToInt(step * mean_count / counts_[phase]);
      phase_sums[phase] = WrapAdd(phase_sums[phase], step);
    }
  }

 private:
  uint32_t sums_[kPhases] = {}, counts_[kPhases] = {};
};

void AddHorizontalSteps(const Tile& tile) {
  TileParams& params = tile.params();
  ColumnTally columns;
  for (int row = kCoreFirst; row < kCoreEnd; ++row) CountSteps(tile.Row(kJpegResidual, row, kCoreFirst), 1, columns);
  PhaseTally phases;
  for (uint32_t i = 0; i < KELVO_CORE_SIZE; ++i)
    phases.Add(Bits(params.TileLeft) + i, columns.sums[i], columns.counts[i]);
  phases.AddNormalisedTo(params.JPGColumnPhaseSums);
}

void AddVerticalSteps(const Tile& tile) {
  TileParams& params = tile.params();
  PhaseTally phases;
  for (uint32_t i = 0; i < KELVO_CORE_SIZE; ++i) {
    ColumnTally row;
    CountSteps(tile.Row(kJpegResidual, kCoreFirst + static_cast<int>(i), kCoreFirst), kTileSize, row);
    uint32_t sum = 0, count = 0;
    for (size_t column = 0; column < KELVO_CORE_SIZE; ++column) {
      sum += row.sums[column];
      count += row.counts[column];
    }
    phases.Add(Bits(params.TileTop) + i, sum, count);
  }
  phases.AddNormalisedTo(params.JPGRowPhaseSums);
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
  BuildResidual(tile);
  MarkWhatIsLeftOut(tile);
  AddHorizontalSteps(tile);
  AddVerticalSteps(tile);
  tile.params().JPGTileCount = WrapAdd(tile.params().JPGTileCount, 1);
  DecideJpegGrid(tile.params());
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
