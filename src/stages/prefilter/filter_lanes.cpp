// plain::FilterRows in vectors of neighbouring cells: a vector waits for each of the filters that its cells want, and
// every filter writes its own cells.
#include "stages/fixed_point.h"
#include "stages/lanes.h"
#include "stages/prefilter/filter_rows.h"

namespace kelvo::KELVO_TARGET {
namespace {

using namespace class_code;

using Bits64 = uint64_t __attribute__((vector_size(kVectorBytes)));

constexpr uint32_t kKind = kRowMask << kRowShift | kDirectional;  // row, and whether the direction counts

// The numbers of the filters of a vector of cells, each as a bit.
uint64_t FiltersOf(const int32_t* codes) {
  const Vector code = Load(codes);
  const Vector row = code >> kRowShift & kRowMask;
  const Vector directional = Equal(code & kDirectional, All(kDirectional));
  const Vector number = row * (kDirections + 1) + Select(directional, code & kDirectionMask, All(kDirections));
  const auto pairs = reinterpret_cast<Bits64>(number);
  const Bits64 one = Bits64{} + 1;
  const Bits64 bits = one << (pairs & 0xFFFFFFFFu) | one << (pairs >> 32);
  uint64_t present = 0;
  for (int i = 0; i < kLanes / 2; ++i) present |= bits[i];
  return present;
}

// The codes of the cells that want a filter, under a mask.
struct Wanted {
  Vector mask, value;
};

Wanted CodesOf(int number) {
  const uint32_t row = Bits(number / (kDirections + 1)), direction = Bits(number % (kDirections + 1));
  if (direction == kDirections) return {All(kKind), All(row << kRowShift)};
  return {All(kKind | kDirectionMask), All(row << kRowShift | kDirectional | direction)};
}

// The weights of a filter sum to one, so that nothing is normalised.
void FilterVectors(const FilterPlanes& planes, const Stencil& filter, const Wanted& wanted, const uint16_t* places) {
  constexpr int kCount = FilterQueues::kTogether;
  Vector total[kCount] = {};
  const int16_t* next = filter.cells.data();
  for (size_t s = 0; s < filter.sums.size(); ++s) {
    const PartialSum sum = filter.sums.data()[s];
    Vector part[kCount] = {};
    for (const int16_t* end = next + sum.count; next != end; ++next)
      for (int k = 0; k < kCount; ++k) part[k] += Load(planes.display + places[k] + *next);
    const int left = sum.shift < 0 ? -sum.shift : 0, right = sum.shift < 0 ? 0 : sum.shift;
    for (int k = 0; k < kCount; ++k) total[k] += ShiftRightArithmetic(part[k] << left, right);
  }
  for (int k = 0; k < kCount; ++k) {
    const Vector chosen = Equal(Load(planes.codes + places[k]) & wanted.mask, wanted.value);
    int32_t* to = planes.staged + places[k];
    Store(to, Select(chosen, total[k], Load(to)));
  }
}

}  // namespace

void FilterRows(const FilterPlanes& planes, int rows, int columns) {
  const auto work = [&](int number, const uint16_t* places, int count) {
    const Stencil& filter = FilterOfNumber(number);
    const Wanted wanted = CodesOf(number);
    for (int i = 0; i < count; i += FilterQueues::kTogether) FilterVectors(planes, filter, wanted, places + i);
  };
  FilterQueues queues;
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; column += kLanes) {
      const int place = row * kTileSize + (column + kLanes <= columns ? column : columns - kLanes);
      Store(planes.staged + place, Load(planes.display + place));
      uint64_t filters = FiltersOf(planes.codes + place) & ~(uint64_t{1} << kKeepsCell);
      for (; filters != 0; filters &= filters - 1) queues.Add(__builtin_ctzll(filters), place, work);
    }
  queues.Finish(work);
}

}  // namespace kelvo::KELVO_TARGET
