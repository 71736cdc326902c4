#include "stages/prefilter/residual.h"

#include <initializer_list>

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

using class_code::kLimited;
using class_code::kOverLimit;

constexpr int kCrowdRadiusSquared = 32;  // how far a crowd limits its neighbours

int32_t WithByte(int32_t cell, int32_t residual) {
  return Signed((Bits(cell) & ~255u) | (Bits(residual) & 255u));
}

template <class Change>
void ForEachCell(int margin, Change change) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    for (int column = region.first; column < region.end; ++column) change(row, column);
}

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

void MarkDisc(const Tile& tile, const Region& region, int row, int column) {
  const int reach = 5;
  for (int y = -reach; y <= reach; ++y)
    for (int x = -reach; x <= reach; ++x) {
      if (y * y + x * x > kCrowdRadiusSquared) continue;
      if (row + y < region.first || row + y >= region.end || column + x < region.first || column + x >= region.end)
        continue;
      int32_t& cell = tile.At(kClass, row + y, column + x);
      cell = Signed(Bits(cell) | kLimited);
    }
}

int32_t Limited(int32_t residual) {
  for (int halving = 0; halving < 3 && (residual > 32 || residual < -32); ++halving) residual >>= 1;
  return residual < -kGreatestResidual ? -kGreatestResidual : residual;
}

// Three sweeps, because halving must not change the sums of later cells.
void Limit(const Tile& tile, int margin) {
  const Region region(margin);
  if (!MarkCrowds(tile, margin)) return;
  ForEachCell(margin, [&](int row, int column) {
    if (Bits(tile.At(kClass, row, column)) & kOverLimit) MarkDisc(tile, region, row, column);
  });
  ForEachCell(margin, [&](int row, int column) {
    if ((Bits(tile.At(kClass, row, column)) & kLimited) == 0) return;
    int32_t& cell = tile.At(kResidual, row, column);
    cell = WithByte(cell, Limited(ResidualByte(cell)));
  });
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

int32_t Damped(int32_t residual, int level) {
  switch (level) {
    case 0:
    case 1:
      return residual;
    case 2:
      return residual - (residual >> 2);
    case 3:
      return residual - (residual >> 1);
    case 4:
      return -(-residual >> 2);
    default:
      return 0;
  }
}

void DampBlocks(const Tile& tile, int margin) {
  const TileParams& params = tile.params();
  const int base = DampingLevel(params.JPGCompression);
  ForEachCell(margin, [&](int row, int column) {
    const int level = base + (OnBlockBorder(params.TileLeft, column, params.JPGHorizontalOffset) ? 1 : 0) +
                      (OnBlockBorder(params.TileTop, row, params.JPGVerticalOffset) ? 1 : 0);
    int32_t& cell = tile.At(kResidual, row, column);
    cell = WithByte(cell, Clamp(Damped(ResidualByte(cell), level), -kGreatestResidual, kGreatestResidual));
  });
}

}  // namespace

void SplitResidual(const Tile& tile, int margin) {
  Split(tile, margin);
  Limit(tile, margin);
  if (tile.params().JPGCompression >= 10) DampBlocks(tile, margin);
}

}  // namespace kelvo
