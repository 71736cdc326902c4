#include "stages/prefilter/filter_rows.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filter_queues.h"
#include "stages/prefilter/filter_unrolled.h"

namespace kelvo::plain {
namespace {

using namespace class_code;

constexpr int kLongRun = 16;  // cells of one filter side by side, from which on a row is quicker

int NumberOf(uint32_t code) {
  const uint32_t row = code >> kRowShift & kRowMask;
  return Signed(row * (kDirections + 1) + ((code & kDirectional) != 0 ? code & kDirectionMask : kDirections));
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
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns;) {
      const int place = row * kTileSize + column;
      const int number = NumberOf(Bits(planes.codes[place]));
      int run = 1;
      while (column + run < columns && NumberOf(Bits(planes.codes[place + run])) == number) ++run;
      if (run >= kLongRun || number == kDirections)
        StencilRow(PrefilterFilter(number / (kDirections + 1), number % (kDirections + 1)), planes.display + place,
                   planes.staged + place, run);
      else
        for (int i = 0; i < run; ++i) queues.Add(number, place + i);
      column += run;
    }
  queues.Finish();
}

}  // namespace kelvo::plain
