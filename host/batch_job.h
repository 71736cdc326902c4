// Many pictures, one after the other.
#ifndef KELVO_HOST_BATCH_JOB_H
#define KELVO_HOST_BATCH_JOB_H

#include "options.h"

namespace kelvo::host {

// Restores, blurs or enlarges options.inputs. Standard output gets a line per picture that tells what was found and
// done, with --json a record; standard error notes, failures, progress and, of several pictures, a summary. A failure
// does not stop the rest. Returns kFailure if there was one; kWrongUsage, before anything is done, if results would
// overwrite each other.
ExitStatus RunBatch(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_BATCH_JOB_H
