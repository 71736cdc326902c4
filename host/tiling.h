// Runs a tile task over a whole picture.
#ifndef KELVO_HOST_TILING_H
#define KELVO_HOST_TILING_H

#include <vips/vips8>

#include "tile_task.h"

namespace kelvo::host {

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
