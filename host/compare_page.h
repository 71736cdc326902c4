// The subcommand compare: two pictures on one page with a slider between them.
#ifndef KELVO_HOST_COMPARE_PAGE_H
#define KELVO_HOST_COMPARE_PAGE_H

#include "options.h"

namespace kelvo::host {

// Writes options.output, an HTML page that holds the pictures options.inputs and needs nothing else. JPEG, PNG and WebP
// files are put in as they are, other formats and turned pictures as upright PNG with 8 bits. The second picture is shown
// at the size of the first. Throws HostError with the file and the reason.
void WriteComparePage(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_COMPARE_PAGE_H
