#include "stages/prefilter/prefilter.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filters.h"
#include "stages/prefilter/residual.h"

namespace kelvo {
namespace {

const Stencil& FilterOf(uint32_t code) {
  const int row = static_cast<int>(code >> class_code::kRowShift & class_code::kRowMask);
  const bool directional = (code & class_code::kDirectional) != 0;
  return PrefilterFilter(row, directional ? static_cast<int>(code & class_code::kDirectionMask) : kDirections);
}

void Smooth(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* codes = tile.Row(kClass, row, region.first);
    const int32_t* display = tile.Row(kDisplay, row, region.first);
    int32_t* staged = tile.Row(kStaged, row, region.first);
    for (int column = 0; column < region.size(); ++column)
      staged[column] = Evaluate(FilterOf(Bits(codes[column])), display + column);
  }
}

}  // namespace

void Prefilter(const Tile& tile, int margin, int extra) {
  Classify(tile, margin + extra);
  Smooth(tile, margin + extra);
  SplitResidual(tile, margin + extra);
}

}  // namespace kelvo
