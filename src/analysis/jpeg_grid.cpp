#include "analysis/jpeg_grid.h"

#include "analysis/jpeg_rows.h"
#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/schedule.h"
#include "stages/stencils/isotropic.h"

namespace kelvo {
namespace {

constexpr int kPhases = 8;
constexpr int kResidualMargin = 16;
constexpr int kSmoother = 4;  // strength of the smoother: the disc of 21 cells
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

void BuildResidual(const Tile& tile) {
  const Region region(kResidualMargin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* display = tile.Row(kDisplay, row, region.first);
    int32_t* residual = tile.Row(kJpegResidual, row, region.first);
    tile.routines().stencil_row(Isotropic(kSmoother), display, residual, region.size());
    tile.routines().jpeg_residual_row(display, residual, region.size());
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
    tile.routines().leave_out_strong_row(cells + kCoreFirst, end_column - kCoreFirst);
    LeaveOut(cells + end_column, region.end - end_column);
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

void AddSteps(const Tile& tile) {
  TileParams& params = tile.params();
  StepTally tally{};
  PhaseTally rows, columns;
  for (uint32_t i = 0; i < KELVO_CORE_SIZE; ++i) {
    tile.routines().count_steps_row(tile.Row(kJpegResidual, kCoreFirst + static_cast<int>(i), kCoreFirst), tally);
    rows.Add(Bits(params.TileTop) + i, tally.row_sum, tally.row_count);
  }
  for (uint32_t i = 0; i < KELVO_CORE_SIZE; ++i)
    columns.Add(Bits(params.TileLeft) + i, tally.column_sums[i], tally.column_counts[i]);
  columns.AddNormalisedTo(params.JPGColumnPhaseSums);
  rows.AddNormalisedTo(params.JPGRowPhaseSums);
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
  AddSteps(tile);
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
