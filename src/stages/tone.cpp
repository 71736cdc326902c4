#include "stages/tone.h"

#include "stages/tone_tables.h"

namespace kelvo {

int32_t ToLinear(const Tile& tile, int32_t display) {
  const int curve = tile.params().CurveIndex;
  return tile.Has(KELVO_VARIANT_KEEP_FRACTION) ? ForwardToneBetween(curve, display) : ForwardTone(curve, display);
}

int32_t ToDisplay(const Tile& tile, int32_t linear) {
  const int curve = tile.params().CurveIndex;
  return tile.Has(KELVO_VARIANT_KEEP_FRACTION) ? InverseToneBetween(curve, linear) : InverseTone(curve, linear);
}

void ToneMapRegion(const Tile& tile, int plane, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* cells = tile.Row(plane, row, region.first);
    for (int column = 0; column < region.size(); ++column) cells[column] = ToLinear(tile, cells[column]);
  }
}

}  // namespace kelvo
