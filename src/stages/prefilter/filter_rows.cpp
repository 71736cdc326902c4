#include "stages/prefilter/filter_rows.h"

#include <algorithm>

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filter_queues.h"
#include "stages/prefilter/filter_unrolled.h"

namespace kelvo::plain {
namespace {

using namespace class_code;

constexpr int kUnchanged = kDirections;  // the filter of row 0
constexpr int kLongRun = 16;             // cells of one filter side by side, from which on a row is quicker

// The numbers of the filters of a row.
void FindFilters(const int32_t* __restrict codes, uint8_t* __restrict numbers, int count) {
  for (int i = 0; i < count; ++i) {
    const uint32_t code = Bits(codes[i]), row = code >> kRowShift & kRowMask;
    const uint32_t direction = (code & kDirectional) != 0 ? code & kDirectionMask : kDirections;
    numbers[i] = static_cast<uint8_t>(row * (kDirections + 1) + direction);
  }
}

int RunLength(const uint8_t* numbers, int count) {
  int run = 1;
  while (run < count && numbers[run] == numbers[0]) ++run;
  return run;
}

struct SingleCells {
  static uint32_t At(const int32_t* cell) { return Bits(*cell); }
  static uint32_t Shifted(uint32_t value, int shift) { return ShiftRight(value, shift); }
};

template <int kNumber>
struct SingleWork {
  static void Apply(const FilterPlanes& planes, const uint16_t* places, int count) {
    for (int i = 0; i < count; ++i)
      planes.staged[places[i]] = Signed(Filtered<SingleCells, kNumber>(planes.display + places[i]));
  }
};

constexpr FilterWorks kWorks = MakeWorks<SingleWork>();

}  // namespace

void FilterRows(const FilterPlanes& planes, int rows, int columns) {
  FilterQueues queues(planes, kWorks);
  for (int row = 0; row < rows; ++row) {
    const int first = row * kTileSize;
    uint8_t numbers[kTileSize];
    FindFilters(planes.codes + first, numbers, columns);
    for (int column = 0; column < columns;) {
      const int number = numbers[column], place = first + column, run = RunLength(numbers + column, columns - column);
      if (number == kUnchanged)
        std::copy_n(planes.display + place, run, planes.staged + place);
      else if (run >= kLongRun)
        StencilRow(PrefilterFilter(number / (kDirections + 1), number % (kDirections + 1)), planes.display + place,
                   planes.staged + place, run);
      else
        for (int i = 0; i < run; ++i) queues.Add(number, place + i);
      column += run;
    }
  }
  queues.Finish();
}

}  // namespace kelvo::plain
