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

uint32_t Contrast(uint32_t code) {
  return code >> kContrastShift & kContrastMask;
}

void MeasureDirections(const Tile& tile, int margin) {
  const Region region(margin);
  tile.routines().measure_rows(tile.Row(kPreSmoothed, region.first, region.first),
                               tile.Row(kClass, region.first, region.first), region.size(), region.size());
}

struct Square {
  int row, column, radius;
};

// Sets `flag` on the cells of the square that lie in the region and pass.
template <class Predicate>
void MarkSquare(const Tile& tile, const Region& region, Square square, uint32_t flag, Predicate pass) {
  const auto first = [&](int middle) { return std::max(middle - square.radius, region.first); };
  const auto end = [&](int middle) { return std::min(middle + square.radius + 1, region.end); };
  for (int row = first(square.row); row < end(square.row); ++row)
    for (int column = first(square.column); column < end(square.column); ++column) {
      int32_t& cell = tile.At(kClass, row, column);
      if (pass(Bits(cell))) cell = Signed(Bits(cell) | flag);
    }
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

// JPEG rings in the flat ground beside a contrast, so only flat cells are marked: an edge must not raise its own
// threshold.
void MarkRinging(const Tile& tile, int margin) {
  const auto flat = [](uint32_t code) { return Contrast(code) <= 50; };
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    for (int column = region.first; column < region.end; ++column) {
      const uint32_t contrast = Contrast(Bits(tile.At(kClass, row, column)));
      if (contrast <= 50) continue;
      const uint32_t near = contrast >= 201 ? kRinging1 : contrast >= 101 ? kRinging2 : kRinging3;
      MarkSquare(tile, region, {row, column, 4}, near, flat);
      if (contrast >= 101) MarkSquare(tile, region, {row, column, 8}, near << 1, flat);
    }
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
