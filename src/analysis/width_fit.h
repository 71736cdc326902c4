// The blur width whose modelled edge response fits a profile best.
#ifndef KELVO_ANALYSIS_WIDTH_FIT_H
#define KELVO_ANALYSIS_WIDTH_FIT_H

#include <optional>

#include "analysis/edge_profile.h"

namespace kelvo {

struct WidthFit {
  int width;     // in samples, 0..26
  int32_t step;  // linear values, signed: what the edge rises from left to right
};

// The best of widths 0..26 at shifts -4..4 of the edge against the profile's middle; of equals the first, shift before
// width. Nothing if no candidate has a step, or if the best shift is -4 or 4: then the edge belongs to another point.
// Samples are linear values 0..16777215.
std::optional<WidthFit> FitWidth(const EdgeProfile& profile);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_WIDTH_FIT_H
