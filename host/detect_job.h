// The subcommand detect: what pictures tell of themselves, as a table or as JSON.
#ifndef KELVO_HOST_DETECT_JOB_H
#define KELVO_HOST_DETECT_JOB_H

#include "options.h"

namespace kelvo::host {

// Measures options.inputs and prints to standard output, one picture after the other. Of a folder every picture in it
// counts, by name, without those of its folders. A file that cannot be used is reported on standard error (with --json
// also in the list) and the others go on. Returns kFailure if there was one.
ExitStatus RunDetectJob(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_DETECT_JOB_H
