#include "stages/forward_blur.h"

#include "stages/routines.h"
#include "stages/schedule.h"
#include "stages/tone.h"

namespace kelvo {

void BlurDisplay(const Tile& tile, const Stencil& blur) {
  TileParams& params = tile.params();
  SetUpSchedule(params);
  const int32_t* display = tile.Cells(kDisplay);
  int32_t* linear = tile.Cells(kEstimate);
  for (int cell = 0; cell < kPlaneCells; ++cell) linear[cell] = ToLinear(tile, display[cell]);

  const Region core(0);
  for (int row = core.first; row < core.end; ++row) {
    int32_t blurred[KELVO_CORE_SIZE];
    tile.routines().stencil_row(blur, tile.Row(kEstimate, row, core.first), blurred, core.size());
    int32_t* result = tile.Row(kDisplay, row, core.first);
    for (int column = 0; column < core.size(); ++column) result[column] = ToDisplay(tile, blurred[column]);
  }
}

}  // namespace kelvo
