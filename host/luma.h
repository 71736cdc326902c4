// Colour pictures worked on by their brightness alone.
#ifndef KELVO_HOST_LUMA_H
#define KELVO_HOST_LUMA_H

#include <vips/vips8>

#include "tile_task.h"

namespace kelvo::host {

// Like ProcessTiles(image, 3, task), with one call for the luma of a tile instead of one per channel: a third of the
// time. Each channel changes by what luma changes by, so that differences between channels, and with them the hue,
// stay; where that would leave the range the differences are scaled down together. `image` is RGB, uchar or ushort,
// with any further bands; it must allow access in any order. Throws vips::VError or HostError.
vips::VImage ProcessLuma(const vips::VImage& image, const TileTask& task);

}  // namespace kelvo::host

#endif  // KELVO_HOST_LUMA_H
