#include "stages/prefilter/prefilter.h"

#include "stages/prefilter/classify.h"
#include "stages/prefilter/filter_rows.h"
#include "stages/prefilter/residual.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

void Smooth(const Tile& tile, int margin) {
  const Region region(margin);
  const auto from_first = [&](Plane plane) { return tile.Row(plane, region.first, region.first); };
  tile.routines().filter_rows({from_first(kClass), from_first(kDisplay), from_first(kStaged)}, region.size(),
                              region.size());
}

}  // namespace

void Prefilter(const Tile& tile, int margin, int extra) {
  Classify(tile, margin + extra);
  Smooth(tile, margin + extra);
  SplitResidual(tile, margin + extra);
}

}  // namespace kelvo
