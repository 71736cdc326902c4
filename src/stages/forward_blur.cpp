#include "stages/forward_blur.h"

#include "stages/routines.h"
#include "stages/schedule.h"
#include "stages/tone.h"

namespace kelvo {

void BlurDisplay(const Tile& tile, const Stencil& blur) {
  TileParams& params = tile.params();
  SetUpSchedule(params);
  int16_t reach = 0;
  for (const int16_t cell : blur.cells) reach = Farther(reach, cell);
  const Region seen(reach);
  for (int row = seen.first; row < seen.end; ++row)
    ToLinearRow(tile, tile.Row(kDisplay, row, seen.first), tile.Row(kEstimate, row, seen.first), seen.size());

  const Region core(0);
  tile.routines().stencil_area(blur, tile.Row(kEstimate, core.first, core.first),
                               tile.Row(kDisplay, core.first, core.first), {core.size(), core.size()});
  for (int row = core.first; row < core.end; ++row) {
    int32_t* result = tile.Row(kDisplay, row, core.first);
    ToDisplayRow(tile, result, result, core.size());
  }
}

}  // namespace kelvo
