#include "stages/prefilter/filter_rows.h"

#include "stages/fixed_point.h"

namespace kelvo::plain {
namespace {

using namespace class_code;

constexpr int kLongRun = 16;  // cells of one filter side by side, from which on a row is quicker

int NumberOf(uint32_t code) {
  const uint32_t row = code >> kRowShift & kRowMask;
  return Signed(row * (kDirections + 1) + ((code & kDirectional) != 0 ? code & kDirectionMask : kDirections));
}

// The weights of a filter sum to one, so that nothing is normalised.
void FilterCells(const FilterPlanes& planes, const Stencil& filter, const uint16_t* places) {
  constexpr int kCount = FilterQueues::kTogether;
  uint32_t total[kCount] = {};
  const int16_t* next = filter.cells.data();
  for (const PartialSum sum : filter.sums) {
    uint32_t part[kCount] = {};
    for (const int16_t* end = next + sum.count; next != end; ++next)
      for (int k = 0; k < kCount; ++k) part[k] += Bits(planes.display[places[k] + *next]);
    const int left = sum.shift < 0 ? -sum.shift : 0, right = sum.shift < 0 ? 0 : sum.shift;
    for (int k = 0; k < kCount; ++k) total[k] += ShiftRight(part[k] << left, right);
  }
  for (int k = 0; k < kCount; ++k) planes.staged[places[k]] = Signed(total[k]);
}

}  // namespace

void FilterRows(const FilterPlanes& planes, int rows, int columns) {
  const auto work = [&](int number, const uint16_t* places, int count) {
    const Stencil& filter = FilterOfNumber(number);
    for (int i = 0; i < count; i += FilterQueues::kTogether) FilterCells(planes, filter, places + i);
  };
  FilterQueues queues;
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns;) {
      const int place = row * kTileSize + column;
      const int number = NumberOf(Bits(planes.codes[place]));
      int run = 1;
      while (column + run < columns && NumberOf(Bits(planes.codes[place + run])) == number) ++run;
      if (run >= kLongRun)
        StencilRow(FilterOfNumber(number), planes.display + place, planes.staged + place, run);
      else
        for (int i = 0; i < run; ++i) queues.Add(number, place + i, work);
      column += run;
    }
  queues.Finish(work);
}

}  // namespace kelvo::plain
