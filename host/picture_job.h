// One picture from file to file.
#ifndef KELVO_HOST_PICTURE_JOB_H
#define KELVO_HOST_PICTURE_JOB_H

#include <string>

#include "file_list.h"
#include "options.h"
#include "picture_record.h"

namespace kelvo::host {

// Restores, blurs or enlarges file.path into file.output as options ask; never throws. `label` is put before the progress
// bar, for example "3 of 20, ".
PictureRecord RunPictureJob(const PictureFile& file, const Options& options, const std::string& label);

}  // namespace kelvo::host

#endif  // KELVO_HOST_PICTURE_JOB_H
