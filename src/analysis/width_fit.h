// The blur width whose modelled edge response fits a profile best.
#ifndef KELVO_ANALYSIS_WIDTH_FIT_H
#define KELVO_ANALYSIS_WIDTH_FIT_H

#include "analysis/edge_profile.h"
#include "stages/target.h"

namespace kelvo {

struct WidthFit {
  int width;     // in samples, 0..26; kNoFit
  int32_t step;  // linear values, signed: what the edge rises from left to right
};
inline constexpr int kNoFit = -1;
inline constexpr int kFitScratch = 20000;

// fits[i] = the best of widths 0..26 at shifts -4..4 of the edge against the middle of profiles[i]; of equals the
// first, shift before width. kNoFit if no candidate has a step, or if the best shift is -4 or 4: then the edge belongs
// to another point. Samples are linear values 0..16777215. `scratch` has room for kFitScratch cells.
namespace plain {
void FitWidths(const EdgeProfile* profiles, int count, WidthFit* fits, int32_t* scratch);
}
namespace KELVO_TARGET {
void FitWidths(const EdgeProfile* profiles, int count, WidthFit* fits, int32_t* scratch);
}

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_WIDTH_FIT_H
