#include "enlarge/enlarge.h"

#include <algorithm>

#include "enlarge/rules.h"
#include "stages/copy.h"
#include "stages/prefilter/prefilter.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

constexpr int kPrefilterMargin = 12;

// The blocks that are reshaped: those of output rows and columns 62..193, one block more than the core on all sides, so
// that lines reach into the core from outside.
constexpr int kFirstPixel = kCoreFirst - 2;
constexpr int kBlocks = (kCoreEnd + 2 - kFirstPixel) / 2;
constexpr int kRing = 2;  // how far rules see, in source pixels

// The four corners of a block; two opposite ones add up to 3.
enum Corner : int { kNorthWest, kNorthEast, kSouthWest, kSouthEast, kCorners };

// A small plane with one cell per block and a ring around them.
constexpr int kGridSide = kBlocks + 2 * kRing;
constexpr int kGridStride = 72;
constexpr int kGridCells = kGridSide * kGridStride;
static_assert(kGridSide <= kGridStride && (1 + kCorners) * kGridCells <= kPlaneCells);

// The source pixels and the four output pixels of every block, apart, so that neighbours lie side by side. Lives in
// kPreSmoothed.
class BlockGrids {
 public:
  explicit BlockGrids(const Tile& tile) : cells_(tile.Cells(kPreSmoothed)) {}

  // Block (row, 0), rows -kRing .. kBlocks + kRing - 1.
  int32_t* Source(int row) const { return cells_ + (row + kRing) * kGridStride + kRing; }
  int32_t* Output(int corner, int row) const { return Source(row) + (1 + corner) * kGridCells; }

 private:
  int32_t* cells_;
};

// A rule turned so that it is about `corner`: where its north and west lie, and its beside and below.
struct Turn {
  Corner corner, beside, below;
  Compass compass;
  int outside_rows, outside_columns;  // from the block to that of the outside pixel
};

// In the order of the phases.
constexpr Turn kTurns[] = {
    {kNorthWest, kNorthEast, kSouthWest, {-kGridStride, -1}, -1, -1},
    {kNorthEast, kSouthEast, kNorthWest, {1, -kGridStride}, -1, 1},
    {kSouthWest, kNorthWest, kSouthEast, {-1, kGridStride}, 1, -1},
    {kSouthEast, kSouthWest, kNorthEast, {kGridStride, 1}, 1, 1},
};

void Gather(const Tile& tile, const BlockGrids& grids) {
  constexpr int kFirst = kCoreFirst + kFirstPixel / 2 - kRing;  // of the source, in kEstimate
  for (int row = 0; row < kGridSide; ++row)
    std::copy_n(tile.Row(kEstimate, kFirst + row, kFirst), kGridSide, grids.Source(row - kRing) - kRing);
}

// Corners and notches change nothing outside their block, so all their phases pass over a row at once.
void ReshapeBlocks(const Routines& routines, const BlockGrids& grids) {
  for (int row = 0; row < kBlocks; ++row) {
    const int32_t* source = grids.Source(row);
    for (int corner = 0; corner < kCorners; ++corner) std::copy_n(source, kBlocks, grids.Output(corner, row));
    for (const Turn& turn : kTurns)
      routines.shape_corner_row(source, turn.compass, grids.Output(turn.corner, row), grids.Output(turn.beside, row),
                                grids.Output(turn.below, row), kBlocks);
    for (const Turn& turn : kTurns)
      routines.fill_notch_row(source, turn.compass, grids.Output(turn.corner, row), kBlocks);
  }
}

// Two phases may write one pixel, and the later one counts.
void JoinLines(const Routines& routines, const BlockGrids& grids) {
  for (const Turn& turn : kTurns)
    for (int row = 0; row < kBlocks; ++row)
      routines.join_line_row(grids.Source(row), turn.compass, grids.Output(turn.corner, row),
                             grids.Output(kSouthEast - turn.corner, row + turn.outside_rows) + turn.outside_columns,
                             kBlocks);
}

// Output pixels back among one another.
void Scatter(const Tile& tile, const BlockGrids& grids) {
  for (int row = 0; row < 2 * kBlocks; ++row) {
    const int32_t* west = grids.Output(row % 2 == 0 ? kNorthWest : kSouthWest, row / 2);
    const int32_t* east = grids.Output(row % 2 == 0 ? kNorthEast : kSouthEast, row / 2);
    int32_t* pixels = tile.Row(kDisplay, kFirstPixel + row, kFirstPixel);
    for (int column = 0; column < kBlocks; ++column) {
      pixels[2 * column] = west[column];
      pixels[2 * column + 1] = east[column];
    }
  }
}

// Every cell of the core of plane `from` becomes 2 x 2 cells of plane `to`.
void DoubleCore(const Tile& tile, int from, int to) {
  for (int row = 0; row < kTileSize / 2; ++row) {
    const int32_t* cells = tile.Row(from, kCoreFirst + row, kCoreFirst);
    int32_t* doubled = tile.Row(to, 2 * row);
    for (int column = 0; column < kTileSize / 2; ++column)
      doubled[2 * column] = doubled[2 * column + 1] = cells[column];
    std::copy_n(doubled, kTileSize, doubled + kTileSize);
  }
}

}  // namespace

void EnlargeCentre(const Tile& tile) {
  CopyRegion(tile, kDisplay, kEstimate, 0);
  DoubleCore(tile, kEstimate, kDisplay);
  const BlockGrids grids(tile);
  Gather(tile, grids);
  ReshapeBlocks(tile.routines(), grids);
  JoinLines(tile.routines(), grids);
  Scatter(tile, grids);
}

void Enlarge(const Tile& tile) {
  ClearPrefilterPlanes(tile);
  Prefilter(tile, kPrefilterMargin, 0);
  DoubleCore(tile, kClass, kDoubledClass);
  EnlargeCentre(tile);
}

}  // namespace kelvo
