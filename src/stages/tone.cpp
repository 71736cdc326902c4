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
  const Routines& routines = tile.routines();
  const bool keep = tile.Has(KELVO_VARIANT_KEEP_FRACTION);
  (keep ? routines.linear_between_row : routines.linear_row)(kForwardTone[tile.params().CurveIndex], from, to, count);
}

void ToDisplayRow(const Tile& tile, const int32_t* from, int32_t* to, int count) {
  const Routines& routines = tile.routines();
  const bool keep = tile.Has(KELVO_VARIANT_KEEP_FRACTION);
  (keep ? routines.display_between_row : routines.display_row)(kInverseTone[tile.params().CurveIndex], from, to, count);
}

namespace plain {

void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[(from[i] >> 7) & 255];
}

void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[Clamp(from[i] >> 12, 0, 4095)];
}

void LinearBetweenRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = ForwardToneBetween(table, from[i]);
}

void DisplayBetweenRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = InverseToneBetween(table, from[i]);
}

}  // namespace plain

}  // namespace kelvo
