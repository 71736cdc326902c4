// Twofold enlargement of a whole picture.
#ifndef KELVO_HOST_ENLARGING_H
#define KELVO_HOST_ENLARGING_H

#include <vips/vips8>

namespace kelvo::host {

// `image`, of 8 or 16 bits, with twice the columns and rows; output pixels (2 x, 2 y) to (2 x + 1, 2 y + 1) cover pixel
// (x, y). The resolution doubles, so that the picture prints at its size, and so do the sizes that an XMP packet repeats; those
// of EXIF follow when the picture is written.
//
// A band is enlarged for itself, as the change that the library makes over plain doubling: what is flat keeps its exact
// samples at any depth. Where one band, the last, follows the first `colour_bands`, it is taken for transparency and
// the colours are weighed by it: what cannot be seen does not bleed into edges. Further bands are enlarged like colours.
//
// Nothing is computed yet: tiles of 128 x 128 output pixels, on a grid that starts at the top left, are evaluated where
// and when pixels are asked for. Throws HostError if the result would be larger than libvips can hold or for any other
// format, vips::VError.
vips::VImage EnlargePicture(const vips::VImage& image, int colour_bands);

}  // namespace kelvo::host

#endif  // KELVO_HOST_ENLARGING_H
