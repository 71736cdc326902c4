// Maps a region of a plane from display values to linear light, in place.
//
//   reads, writes  `plane`, region `margin`: any values in, 0..16711680 out
//
// Only bits 7..14 count, the grey level: the fraction of a display value is dropped, unless the variant keeps it.
#ifndef KELVO_STAGES_TONE_H
#define KELVO_STAGES_TONE_H

#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo {

void ToneMapRegion(const Tile& tile, int plane, int margin);

// Rows of cells by the block's curve, from display to linear values and back, through the tile's routines; `from` and
// `to` may be the same row.
void ToLinearRow(const Tile& tile, const int32_t* from, int32_t* to, int count);
void ToDisplayRow(const Tile& tile, const int32_t* from, int32_t* to, int count);

// Rows of cells by a table of kForwardTone or of kInverseTone: the entries, or the chords between them (tone_tables.h).
// `from` and `to` may be the same row.
namespace plain {
void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count);
void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count);
void LinearBetweenRow(const int32_t* table, const int32_t* from, int32_t* to, int count);
void DisplayBetweenRow(const int16_t* table, const int32_t* from, int32_t* to, int count);
}  // namespace plain
namespace KELVO_TARGET {
void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count);
void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count);
void LinearBetweenRow(const int32_t* table, const int32_t* from, int32_t* to, int count);
void DisplayBetweenRow(const int16_t* table, const int32_t* from, int32_t* to, int count);
}  // namespace KELVO_TARGET

}  // namespace kelvo

#endif  // KELVO_STAGES_TONE_H
