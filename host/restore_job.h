// One picture from file to file.
#ifndef KELVO_HOST_RESTORE_JOB_H
#define KELVO_HOST_RESTORE_JOB_H

#include "options.h"

namespace kelvo::host {

// Restores, blurs or enlarges options.input into options.output. Notes and the progress bar go to standard error.
// Throws HostError with the file and the reason.
void RunPictureJob(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_RESTORE_JOB_H
