// Cores of tiles, joined to a picture: where neighbours overlap, one fades into the other.
#ifndef KELVO_HOST_SEAMS_H
#define KELVO_HOST_SEAMS_H

#include <vips/vips8>

namespace kelvo::host {

// Cores of 128 x 128 pixels every `step` pixels from the top left of a picture.
struct TileGrid {
  int step;          // 128 less the overlap
  int across, down;  // cores
};

// The grid whose neighbours share `overlap` rows and columns, 0..64: just enough cores to cover the picture.
TileGrid GridOver(const vips::VImage& image, int overlap);

// The picture whose first bands come of `cores`, and the others of `image`.
//
// `cores` shows the cores of the grid side by side, without overlap; its bands are 16-bit display values: changes of
// `image`, or results of their own if `own_values`. In an overlap the weights are linear and the sum is rounded once.
vips::VImage Joined(const vips::VImage& image, const vips::VImage& cores, const TileGrid& grid, bool own_values);

}  // namespace kelvo::host

#endif  // KELVO_HOST_SEAMS_H
