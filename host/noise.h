// How much noise a picture has.
#ifndef KELVO_HOST_NOISE_H
#define KELVO_HOST_NOISE_H

#include <vips/vips8>

namespace kelvo::host {

// Standard deviation of the noise in 8-bit grey levels, the mean of the colour bands, of a picture of 8 or 16 bits.
//
// What a Laplacian of a Laplacian (1 -2 1, down and across: Immerkaer, Fast noise variance estimation, 1996) leaves is noise
// where the picture is smooth, and a blurred picture is smooth nearly everywhere; so it is averaged over squares of
// 16 x 16 pixels, and the tenth percentile of the squares counts. Squares with pixels near black or white, where noise is
// cut off, are left out as long as others remain. Rounding to whole levels alone gives 0.2 to 0.3. 0 for pictures with a
// side below 16. Reads the whole picture, once, on as many threads as libvips uses. `show_progress`: a bar on standard
// error. Throws vips::VError, also when the user stops it.
double NoiseOf(const vips::VImage& image, int colour_bands, bool show_progress = false);

// The RemoveNoise -1..3 that suits a picture in which noise of `sigma` grey levels was measured, after JPEG of strength
// `jpeg` 0..80. From strength 10 on JPEG has rounded most of the noise away where it is measured, but not at edges:
// what is left counts fourfold (measured: of 1.5 levels 0.4 are left by quality 92, of 3 levels 1.1).
int NoiseLevel(double sigma, int jpeg = 0);

}  // namespace kelvo::host

#endif  // KELVO_HOST_NOISE_H
