#include "stages/copy.h"

#include <algorithm>

namespace kelvo {

void CopyRegion(const Tile& tile, int from, int to, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    std::copy_n(tile.Row(from, row, region.first), region.size(), tile.Row(to, row, region.first));
}

void ClearPrefilterPlanes(const Tile& tile) {
  std::fill_n(tile.Cells(kClass), kPlaneCells, 0);
  std::fill_n(tile.Cells(kResidual), kPlaneCells, 0);
}

void SaveEstimate(const Tile& tile) {
  std::copy_n(tile.Cells(kEstimate), kPlaneCells, tile.Cells(kSaved));
}

void RestoreEstimate(const Tile& tile) {
  std::copy_n(tile.Cells(kSaved), kPlaneCells, tile.Cells(kEstimate));
}

}  // namespace kelvo
