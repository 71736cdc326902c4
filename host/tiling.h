// Runs a tile task over a whole picture.
#ifndef KELVO_HOST_TILING_H
#define KELVO_HOST_TILING_H

#include <array>
#include <vips/vips8>

#include "tile_task.h"

namespace kelvo::host {

// For each of the 256 rows (or columns) of a tile, the picture row it is read from. `start` is the picture row of the
// tile's first core row, `size` (at least 1) the number of picture rows. Rows outside are mirrored at the picture's
// borders, the border row itself being repeated: -1 is row 0, -2 is row 1; small pictures are mirrored many times.
std::array<int, KELVO_TILE_SIZE> MirroredPositions(int start, int size);

// A picture whose first `colour_bands` bands are the task's results; the other bands are those of `image`.
//
// `image` is uchar or ushort without coding and must allow access in any order. Tiles lie on a grid of 128 x 128 that
// starts at the top left, and each colour band of a tile is one call. Nothing is computed yet: the result is evaluated
// where and when its pixels are asked for, on as many threads as libvips uses, and each tile once as long as it is
// read in rows of tiles. A refused call makes the evaluation fail with the library's message.
//
// Throws vips::VError, or HostError for any other format.
vips::VImage ProcessTiles(const vips::VImage& image, int colour_bands, const TileTask& task);

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILING_H
