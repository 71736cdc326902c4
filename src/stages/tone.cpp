#include "stages/tone.h"

#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/tone_tables.h"

namespace kelvo {

void ToneMapRegion(const Tile& tile, int plane, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* cells = tile.Row(plane, row, region.first);
    ToLinearRow(tile, cells, cells, region.size());
  }
}

void ToLinearRow(const Tile& tile, const int32_t* from, int32_t* to, int count) {
  const int curve = tile.params().CurveIndex;
  if (!tile.Has(KELVO_VARIANT_KEEP_FRACTION)) return tile.routines().linear_row(kForwardTone[curve], from, to, count);
  for (int i = 0; i < count; ++i) to[i] = ForwardToneBetween(curve, from[i]);
}

void ToDisplayRow(const Tile& tile, const int32_t* from, int32_t* to, int count) {
  const int curve = tile.params().CurveIndex;
  if (!tile.Has(KELVO_VARIANT_KEEP_FRACTION)) return tile.routines().display_row(kInverseTone[curve], from, to, count);
  for (int i = 0; i < count; ++i) to[i] = InverseToneBetween(curve, from[i]);
}

namespace plain {

void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[(from[i] >> 7) & 255];
}

void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[Clamp(from[i] >> 12, 0, 4095)];
}

}  // namespace plain

}  // namespace kelvo
