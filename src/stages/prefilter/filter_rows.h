// Every cell of an area by the filter that its class code names.
//
// The filters change from cell to cell. Places that want the same one wait in its queue until there are enough to be
// worked one after the other, so that neither calls nor branches change from cell to cell.
#ifndef KELVO_STAGES_PREFILTER_FILTER_ROWS_H
#define KELVO_STAGES_PREFILTER_FILTER_ROWS_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// Three planes from the same cell on.
struct FilterPlanes {
  const int32_t* codes;  // as choose_filter_row leaves them
  const int32_t* display;
  int32_t* staged;  // overlaps neither of the others
};

namespace KELVO_TARGET {

// Filters `rows` rows of `columns` cells, at least 16, of planes from `planes` on.
void FilterRows(const FilterPlanes& planes, int rows, int columns);

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_FILTER_ROWS_H
