#include "stages/tone.h"

#include "stages/fixed_point.h"
#include "stages/tone_tables.h"

namespace kelvo {

int32_t ToLinear(const TileParams& params, int32_t display) {
  return kForwardTone[params.CurveIndex][(display >> 7) & 255];
}

int32_t ToDisplay(const TileParams& params, int32_t linear) {
  return kInverseTone[params.CurveIndex][Clamp(linear >> 12, 0, 4095)];
}

void ToneMapRegion(const Tile& tile, int plane, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* cells = tile.Row(plane, row, region.first);
    for (int column = 0; column < region.size(); ++column) cells[column] = ToLinear(tile.params(), cells[column]);
  }
}

}  // namespace kelvo
