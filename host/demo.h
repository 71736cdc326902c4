// A demonstration that needs no picture of one's own.
#ifndef KELVO_HOST_DEMO_H
#define KELVO_HOST_DEMO_H

#include "options.h"

namespace kelvo::host {

// Draws a test picture, blurs it with options.picture.tile.width, restores it with the highest accuracy, writes all three
// and a comparison into the folder options.output, and prints the PSNR before and after to standard output. Throws
// HostError, for example if one of the files exists and options.force is not set; then nothing is written.
void RunDemo(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_DEMO_H
