// The size of a picture where its XMP packet repeats it.
#ifndef KELVO_HOST_XMP_SIZE_H
#define KELVO_HOST_XMP_SIZE_H

#include <string>

namespace kelvo::host {

// The packet of a picture of width x height pixels, for one of twice as many: ImageWidth, ImageLength, PixelXDimension
// and PixelYDimension are doubled where they tell this size, XResolution and YResolution always. What is no number, or
// another size, stays as it is, and so does all the rest.
std::string WithDoubledSize(const std::string& xmp, int width, int height);

}  // namespace kelvo::host

#endif  // KELVO_HOST_XMP_SIZE_H
