// The 8 x 8 block grid that JPEG leaves in a picture: its phase, and how strongly the blocks show.
//
//   reads   kDisplay  rows and columns 46..209, any values
//   writes  kJpegResidual  rows and columns 48..207: smoothed minus own display value, even; bit 0 set: left out
//   fields  in      ImageWidth, ImageHeight, TileTop, TileLeft
//           in/out  JPGColumnPhaseSums, JPGRowPhaseSums, JPGTileCount: over the tiles of an image; they wrap
//           out     JPGHorizontalOffset, JPGVerticalOffset 0..7, JPGCompression 0..80, JPGLevel 0..6
//   errors  none: the export has checked the block
//
// Steps between neighbours are counted by the phase of their image column (row), 0..7. Where detail is strong (7 grey
// levels over its surroundings) nothing is counted, nor outside the core or the image.
#ifndef KELVO_ANALYSIS_JPEG_GRID_H
#define KELVO_ANALYSIS_JPEG_GRID_H

#include "stages/tile.h"

namespace kelvo {

// Adds the tile's steps to the sums, counts the tile and decides.
void DetectJpegGrid(const Tile& tile);

// The verdict on the sums that stand in the block: sets the two offsets, JPGCompression and JPGLevel.
void DecideJpegGrid(TileParams& params);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_JPEG_GRID_H
