#include "stages/prefilter/classify.h"

#include <algorithm>

#include "stages/fixed_point.h"
#include "stages/point_operator.h"
#include "stages/prefilter/class_rows.h"
#include "stages/prefilter/filters.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

using namespace class_code;

void MeasureDirections(const Tile& tile, int margin) {
  const Region region(margin);
  tile.routines().measure_rows(tile.Row(kPreSmoothed, region.first, region.first),
                               tile.Row(kClass, region.first, region.first), region.size(), region.size());
}

// Cells outside the region shed nothing.
void MarkEdgeSurroundings(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* above = row > region.first ? tile.Row(kClass, row - 1, region.first) : nullptr;
    const int32_t* below = row + 1 < region.end ? tile.Row(kClass, row + 1, region.first) : nullptr;
    tile.routines().mark_edge_row(above, tile.Row(kClass, row, region.first), below, region.size());
  }
}

void MarkRinging(const Tile& tile, int margin) {
  const Region region(margin);
  tile.routines().mark_ringing_rows(tile.Row(kClass, region.first, region.first), region.size(), region.size());
}

// The contrast above which a cell counts as detail. In 64 bits, because the enlargement takes whatever NoiseFloor the
// host left; the products with 1.4 and 1.2 are double and truncated.
int64_t DetailThreshold(uint32_t code, int32_t noise_floor) {
  int64_t threshold = noise_floor;
  if (code & kOnEdge)
    threshold >>= 1;
  else if (code & kByEdge)
    threshold -= threshold >> 2;
  else if (code & kNearEdge)
    threshold -= threshold >> 3;

  if (code & kRinging1)
    threshold *= 2;
  else if (code & kRinging2)
    threshold = static_cast<int64_t>(static_cast<double>(threshold) * 1.4);
  else if (code & kRinging3)
    threshold = static_cast<int64_t>(static_cast<double>(threshold) * 1.2);
  return threshold;
}

// Flatter cells get a wider filter; from row 4 on it is directional only where noise is to be removed. A negative
// threshold and one beyond 511 << 4 compare like -1 and 8191.
DetailThresholds MakeThresholds(const TileParams& params) {
  DetailThresholds thresholds{};
  for (uint32_t flags = 0; flags < 64; ++flags) {
    const int64_t threshold = DetailThreshold((flags & 7) << 13 | (flags >> 3) << 23, params.NoiseFloor);
    thresholds.of[flags] = static_cast<int32_t>(std::clamp<int64_t>(threshold, -1, 8191));
  }
  thresholds.last_directional = params.RemoveNoise >= 2 ? 4 : 3;
  return thresholds;
}

void ChooseFilters(const Tile& tile, int margin) {
  const Region region(margin);
  const DetailThresholds thresholds = MakeThresholds(tile.params());
  for (int row = region.first; row < region.end; ++row)
    tile.routines().choose_filter_row(thresholds, tile.Row(kClass, row, region.first), region.size());
}

}  // namespace

void Classify(const Tile& tile, int margin) {
  ApplyPointOperator(tile, PreSmoother(tile.params()), kDisplay, kPreSmoothed, margin + 3);
  MeasureDirections(tile, margin + 2);
  MarkEdgeSurroundings(tile, margin);
  if (tile.params().JPGCompression >= 16) MarkRinging(tile, margin);
  ChooseFilters(tile, margin);
}

}  // namespace kelvo
