#include "stages/prefilter/prefilter.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filters.h"
#include "stages/prefilter/residual.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

constexpr int kShortRun = 8;  // below it a row of one filter is not worth a call

// The row and the direction of a cell's filter in one number.
uint32_t FilterKey(uint32_t code) {
  const uint32_t row = code >> class_code::kRowShift & class_code::kRowMask;
  return row << 4 | ((code & class_code::kDirectional) != 0 ? code & class_code::kDirectionMask : kDirections);
}

void Smooth(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* codes = tile.Row(kClass, row, region.first);
    const int32_t* display = tile.Row(kDisplay, row, region.first);
    int32_t* staged = tile.Row(kStaged, row, region.first);
    for (int column = 0; column < region.size();) {
      const uint32_t key = FilterKey(Bits(codes[column]));
      const Stencil& filter = PrefilterFilter(static_cast<int>(key >> 4), static_cast<int>(key & 15));
      int end = column + 1;
      while (end < region.size() && FilterKey(Bits(codes[end])) == key) ++end;
      if (end - column < kShortRun)
        for (; column < end; ++column) staged[column] = Evaluate(filter, display + column);
      else
        tile.routines().stencil_row(filter, display + column, staged + column, end - column);
      column = end;
    }
  }
}

}  // namespace

void Prefilter(const Tile& tile, int margin, int extra) {
  Classify(tile, margin + extra);
  Smooth(tile, margin + extra);
  SplitResidual(tile, margin + extra);
}

}  // namespace kelvo
