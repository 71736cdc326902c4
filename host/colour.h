// Which bands of a picture are restored, and pictures that must be converted first.
#ifndef KELVO_HOST_COLOUR_H
#define KELVO_HOST_COLOUR_H

#include <string>
#include <vips/vips8>

namespace kelvo::host {

// A gray or RGB picture of 8 or 16 bits. The first `colour_bands` bands (1 or 3) are colour, the others (alpha) are
// not.
struct ColourPicture {
  vips::VImage image;
  int colour_bands;
  std::string note;  // what was converted, or empty
};

// Sees `image` as gray or RGB. Pictures whose colour space is known but another one are converted to sRGB, 8 bits for
// 8-bit samples and else 16, and lose an ICC profile that no longer applies. Throws HostError with the reason if there
// is no sensible way, vips::VError if libvips fails.
ColourPicture AsColourPicture(const vips::VImage& image);

}  // namespace kelvo::host

#endif  // KELVO_HOST_COLOUR_H
