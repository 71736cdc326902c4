// One picture from file to file.
#ifndef KELVO_HOST_RESTORE_JOB_H
#define KELVO_HOST_RESTORE_JOB_H

#include "options.h"

namespace kelvo::host {

// Restores, blurs or enlarges options.input into options.output. What was found in the picture and what is done about it
// goes to standard output, notes and the progress bar to standard error, none of them if options.quiet.
// Throws HostError with the file and the reason.
void RunPictureJob(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_RESTORE_JOB_H
