#include "stages/point_operator.h"

#include "stages/routines.h"

namespace kelvo {

void ApplyPointOperator(const Tile& tile, const Stencil& stencil, int from, int to, int margin) {
  const Region region(margin);
  tile.routines().stencil_area(stencil, tile.Row(from, region.first, region.first),
                               tile.Row(to, region.first, region.first), {region.size(), region.size()});
}

void FindMinimum(const Tile& tile, std::span<const int16_t> cells, int from, int to, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    tile.routines().minimum_row(cells, tile.Row(from, row, region.first), tile.Row(to, row, region.first),
                                region.size());
}

}  // namespace kelvo
