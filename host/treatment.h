// What restore, blur and enlarge make of a picture.
#ifndef KELVO_HOST_TREATMENT_H
#define KELVO_HOST_TREATMENT_H

#include "colour.h"
#include "options.h"

namespace kelvo::host {

// The picture restored or blurred with the settings `done`, whose width 0 changes nothing, then enlarged and cut to the
// region if the picture's settings say so. Evaluated where and when pixels are asked for. Throws HostError if the region
// leaves the picture or the result would be too large, vips::VError.
vips::VImage TreatPicture(const ColourPicture& picture, Command command, const PictureSettings& settings,
                          const RestoreSettings& done);

}  // namespace kelvo::host

#endif  // KELVO_HOST_TREATMENT_H
