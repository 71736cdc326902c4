// What restoring needs to know and was not told: found in the picture.
#ifndef KELVO_HOST_AUTO_SETTINGS_H
#define KELVO_HOST_AUTO_SETTINGS_H

#include "colour.h"
#include "options.h"

namespace kelvo::host {

// options.settings, with the width and the strength of JPEG that options leave open, and with the phase of the JPEG
// grid. Only what is needed is measured. Unless options.quiet, standard output tells what was found and what is done.
// Width 0: no blur was found. Throws HostError with the file, or vips::VError.
RestoreSettings CompleteSettings(const Options& options, const ColourPicture& picture, bool show_progress);

// Whether a picture without blur is written all the same: the user has named an output, asked for width 0 or wants it
// enlarged.
bool WritesUnblurred(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_AUTO_SETTINGS_H
