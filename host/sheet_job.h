// The subcommand sheet: one part of a picture, restored in several ways side by side.
#ifndef KELVO_HOST_SHEET_JOB_H
#define KELVO_HOST_SHEET_JOB_H

#include <vips/vips8>

#include "options.h"

namespace kelvo::host {

// Writes the contact sheet of options.inputs[0]: the part as it is, then one cell per width or direction, a label over
// each, turned as the picture's orientation says. 8 bits per sample. Throws HostError with the file and the reason.
void RunSheetJob(const Options& options);

// The columns and rows of a sheet's part with most detail: where the mean gradient is greatest. At most `columns` x
// `rows`, less if the picture is smaller. Throws vips::VError.
Area MostDetailedPart(const vips::VImage& image, int columns, int rows);

}  // namespace kelvo::host

#endif  // KELVO_HOST_SHEET_JOB_H
