// A drawn picture that shows what blurring takes away, what restoring brings back and what goes wrong on the way.
#ifndef KELVO_HOST_TEST_PICTURE_H
#define KELVO_HOST_TEST_PICTURE_H

#include <string>
#include <vector>
#include <vips/vips8>

namespace kelvo::host {

// 768 x 512, 8-bit sRGB, the same on every call: a Siemens star (resolution in all directions), text, line gratings,
// a natural texture, smooth ramps beside hard edges (banding, ringing, tile borders), and points of light with a zone
// plate. Throws vips::VError if text cannot be drawn.
vips::VImage DrawTestPicture();

// `pictures` of equal size side by side, under a label each. 8-bit sRGB. Throws vips::VError.
vips::VImage SideBySide(const std::vector<vips::VImage>& pictures, const std::vector<std::string>& labels);

}  // namespace kelvo::host

#endif  // KELVO_HOST_TEST_PICTURE_H
