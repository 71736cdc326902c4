#include "stages/tone.h"

#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/tone_tables.h"

namespace kelvo {

namespace {

int LinearIndex(int32_t display) {
  return (display >> 7) & 255;
}
int DisplayIndex(int32_t linear) {
  return Clamp(linear >> 12, 0, 4095);
}

}  // namespace

int32_t ToLinear(const TileParams& params, int32_t display) {
  return kForwardTone[params.CurveIndex][LinearIndex(display)];
}

int32_t ToDisplay(const TileParams& params, int32_t linear) {
  return kInverseTone[params.CurveIndex][DisplayIndex(linear)];
}

void ToneMapRegion(const Tile& tile, int plane, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* cells = tile.Row(plane, row, region.first);
    ToLinearRow(tile, cells, cells, region.size());
  }
}

void ToLinearRow(const Tile& tile, const int32_t* from, int32_t* to, int count) {
  tile.routines().linear_row(kForwardTone[tile.params().CurveIndex], from, to, count);
}

void ToDisplayRow(const Tile& tile, const int32_t* from, int32_t* to, int count) {
  tile.routines().display_row(kInverseTone[tile.params().CurveIndex], from, to, count);
}

namespace plain {

void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[LinearIndex(from[i])];
}

void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = table[DisplayIndex(from[i])];
}

}  // namespace plain

}  // namespace kelvo
