// Votes for blur widths, and the verdict on them.
#ifndef KELVO_ANALYSIS_WIDTH_VOTES_H
#define KELVO_ANALYSIS_WIDTH_VOTES_H

#include "kelvo/kelvo.h"

namespace kelvo {

// What an edge of `step` (linear values) counts for `width` 0..20: more with contrast and, but for the head of the
// table, with the width, since wide blurs leave fewer edges.
int32_t VoteWeight(int width, int32_t step);

// Sets SmoothedBlurWidthVotes and DetectedBlurWidth from BlurWidthVotes. Without a positive smoothed vote: width 0.
void DecideBlurWidth(TileParams& params);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_WIDTH_VOTES_H
