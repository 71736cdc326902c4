// Which of libvips's formats a run needs.
#ifndef KELVO_HOST_FORMAT_MODULES_H
#define KELVO_HOST_FORMAT_MODULES_H

#include "options.h"

namespace kelvo::host {

// Whether libvips has to load its modules, which read and write the rarer formats (HEIF, JPEG XL, PDF, slides and what
// ImageMagick knows): not if every input is a file of at most 64 MiB that begins as JPEG, PNG or TIFF do, and results are
// to be such files. Loading them takes as long as starting everything else.
bool NeedsFormatModules(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_FORMAT_MODULES_H
