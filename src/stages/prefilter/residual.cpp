#include "stages/prefilter/residual.h"

#include <initializer_list>

#include "stages/fixed_point.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

void Split(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    tile.routines().split_row(tile.Row(kDisplay, row, region.first), tile.Row(kStaged, row, region.first),
                              tile.Row(kResidual, row, region.first), region.size());
}

// Returns whether there is anything to limit.
bool MarkCrowds(const Tile& tile, int margin) {
  const Region region(margin);
  bool any = false;
  for (int row = region.first; row < region.end; ++row)
    any |= tile.routines().mark_crowd_row(tile.Row(kResidual, row, region.first), tile.Row(kClass, row, region.first),
                                          region.size());
  return any;
}

// After all crowds are marked, because limiting must not change the sums of later cells.
void Limit(const Tile& tile, int margin) {
  const Region region(margin);
  if (!MarkCrowds(tile, margin)) return;
  tile.routines().limit_rows(tile.Row(kResidual, region.first, region.first),
                             tile.Row(kClass, region.first, region.first), region.size(), region.size());
}

// Damping level of a strength of compression, 0..6; a block border adds one for its column and one for its row.
int DampingLevel(int32_t compression) {
  int level = 0;
  for (int32_t limit : {10, 12, 15, 17, 20, 25}) level += compression > limit ? 1 : 0;
  return level;
}

// Whether a plane's row or column lies on a border of the JPEG grid. Unsigned, so that unchecked offsets wrap; & 7 is
// the non-negative remainder also for tiles that begin before the image.
bool OnBlockBorder(int32_t tile_start, int position, int32_t grid_offset) {
  const uint32_t phase = (Bits(tile_start) + 8 + Bits(position) - Bits(grid_offset)) & 7u;
  return phase == 0 || phase == 7;
}

void DampBlocks(const Tile& tile, int margin) {
  const TileParams& params = tile.params();
  const Region region(margin);
  int32_t columns[kTileSize];
  for (int column = region.first; column < region.end; ++column)
    columns[column] = DampingLevel(params.JPGCompression) +
                      (OnBlockBorder(params.TileLeft, column, params.JPGHorizontalOffset) ? 1 : 0);
  for (int row = region.first; row < region.end; ++row)
    tile.routines().damp_block_row(columns + region.first,
                                   OnBlockBorder(params.TileTop, row, params.JPGVerticalOffset) ? 1 : 0,
                                   tile.Row(kResidual, row, region.first), region.size());
}

}  // namespace

void SplitResidual(const Tile& tile, int margin) {
  Split(tile, margin);
  Limit(tile, margin);
  if (tile.params().JPGCompression >= 10) DampBlocks(tile, margin);
}

}  // namespace kelvo
