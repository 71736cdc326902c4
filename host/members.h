// What a blur of the library is made of: the numbers of a member of either family, as they run.
#ifndef KELVO_HOST_MEMBERS_H
#define KELVO_HOST_MEMBERS_H

#include <nlohmann/json_fwd.hpp>

namespace kelvo::host {

// The member of width 1..20 and direction 1..359 in degrees, or the round one for direction 0. Cells lie `column`
// columns right and `up` rows up from the pixel, in the tile as the member sees it: turned by "turned".
//
// Both have "width", "passes", "scale_shift", margins in pixels beyond the core ("margin", "extra_margin",
// "final_margin"), "schedule": per accuracy the iterations of each pass and the refinements of each iteration.
//
// Motion has "direction", "folded" and "angle" in degrees, "bucket", "sweep_size", "line_minimum_size", "reblur_size"
// (sides of squares, pixels), "bare_line", "model_line", "observed_smoother" (null: none) and "operators". Round has
// "shortcut" (may start from a sharpened tile), "blur_size", "floor_size", "floor_cells" (their number) and "blur".
//
// A weighted sum has "cells" with "weight", "total" weight in "unit"s, "shift": sums are in 2^-shift units, and
// "normaliser": of their multiply-high, null where the total is 2^shift. An operator has "pass", "name", "taps" (what
// part "of_step" a cell gains or loses, times "share" / 65536) and "response": the change of the blurred tile to a step
// of one, in "amount" / 65520, and the pixels that stand for the side that rises and the one that falls.
nlohmann::ordered_json DescribeMember(int width, int direction);

// Writes the member to standard output, as JSON or as text for people.
void PrintMember(int width, int direction, bool as_json);

}  // namespace kelvo::host

#endif  // KELVO_HOST_MEMBERS_H
