#include "enlarge/enlarge.h"

#include <algorithm>

#include "enlarge/reshape.h"
#include "stages/copy.h"
#include "stages/prefilter/prefilter.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

constexpr int kPrefilterMargin = 12;
constexpr int kFirstSource = kCoreFirst + kFirstPixel / 2 - kGridRing;  // of the pixels that the rules see

// Every cell becomes two.
void DoubleCells(const int32_t* cells, int32_t* doubled, int count) {
  for (int i = 0; i < count; ++i) doubled[2 * i] = doubled[2 * i + 1] = cells[i];
}

// Every cell of the core of plane `from` becomes 2 x 2 cells of plane `to`.
void DoubleCore(const Tile& tile, int from, int to) {
  for (int row = 0; row < kTileSize / 2; ++row) {
    int32_t* doubled = tile.Row(to, 2 * row);
    DoubleCells(tile.Row(from, kCoreFirst + row, kCoreFirst), doubled, kTileSize / 2);
    std::copy_n(doubled, kTileSize, doubled + kTileSize);
  }
}

// Source row `row` of the core to two rows of the same plane, but for the pixels that are reshaped.
void DoubleAroundBlocks(const Tile& tile, int row) {
  int32_t cells[kTileSize / 2];
  std::copy_n(tile.Row(kDisplay, kCoreFirst + row, kCoreFirst), kTileSize / 2, cells);
  int32_t* doubled = tile.Row(kDisplay, 2 * row);
  const bool reshaped = row >= kFirstPixel / 2 && row < kFirstPixel / 2 + kBlocks;
  const int before = reshaped ? kFirstPixel / 2 : kTileSize / 4;
  const int behind = reshaped ? kFirstPixel / 2 + kBlocks : kTileSize / 4;
  DoubleCells(cells, doubled, before);
  DoubleCells(cells + behind, doubled + 2 * behind, kTileSize / 2 - behind);
  std::copy_n(doubled, 2 * before, doubled + kTileSize);
  std::copy_n(doubled + 2 * behind, kTileSize - 2 * behind, doubled + kTileSize + 2 * behind);
}

}  // namespace

namespace plain {

void ReshapeBlocks(const int32_t* source, int32_t* scratch, int32_t* pixels) {
  ReshapeWords(source, scratch, pixels);
}

}  // namespace plain

void EnlargeCentre(const Tile& tile) {
  for (int row = kFirstSource; row < kFirstSource + kGridSide; ++row)
    std::copy_n(tile.Row(kDisplay, row, kFirstSource), kGridSide, tile.Row(kEstimate, row, kFirstSource));
  // From the outside in, so that no row is overwritten before it is read.
  for (int row = 0; row < kTileSize / 4; ++row) DoubleAroundBlocks(tile, row);
  for (int row = kTileSize / 2 - 1; row >= kTileSize / 4; --row) DoubleAroundBlocks(tile, row);
  tile.routines().reshape_blocks(tile.Row(kEstimate, kFirstSource, kFirstSource), tile.Cells(kPreSmoothed),
                                 tile.Row(kDisplay, kFirstPixel, kFirstPixel));
}

void Enlarge(const Tile& tile) {
  ClearPrefilterPlanes(tile);
  Prefilter(tile, kPrefilterMargin, 0);
  DoubleCore(tile, kClass, kDoubledClass);
  EnlargeCentre(tile);
}

}  // namespace kelvo
