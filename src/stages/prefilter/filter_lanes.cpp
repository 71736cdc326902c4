// plain::FilterRows in vectors of neighbouring cells: a vector waits for each of the filters that its cells want, and
// every filter writes its own cells.
#include "stages/fixed_point.h"
#include "stages/lanes.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filter_queues.h"
#include "stages/prefilter/filter_rows.h"
#include "stages/prefilter/filter_unrolled.h"

namespace kelvo::KELVO_TARGET {
namespace {

using namespace class_code;

using Bits64 = uint64_t __attribute__((vector_size(kVectorBytes)));

constexpr uint32_t kKind = kRowMask << kRowShift | kDirectional;  // row, and whether the direction counts
constexpr uint64_t kUnchanged = uint64_t{1} << kDirections;       // the filter of row 0

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

constexpr int Least(int a, int b) {
  return a < b ? a : b;
}

struct VectorCells {
  static Vector At(const int32_t* cells) { return Load(cells); }
  static Vector Shifted(Vector v, int shift) { return ShiftRightArithmetic(v, shift); }
};

template <int kNumber>
struct VectorWork {
  static constexpr uint32_t kRow = Bits(kNumber / (kDirections + 1)) << kRowShift;
  static constexpr uint32_t kDirection = Bits(kNumber % (kDirections + 1));
  static constexpr bool kIsDirectional = kDirection != kDirections;
  static constexpr uint32_t kMask = kIsDirectional ? kKind | kDirectionMask : kKind;
  static constexpr uint32_t kWanted = kIsDirectional ? kRow | kDirectional | kDirection : kRow;

  static void Apply(const FilterPlanes& planes, const uint16_t* places, int count) {
    for (int i = 0; i < count; ++i) {
      const Vector chosen = Equal(Load(planes.codes + places[i]) & kMask, All(kWanted));
      int32_t* to = planes.staged + places[i];
      Store(to, Select(chosen, Filtered<VectorCells, kNumber>(planes.display + places[i]), Load(to)));
    }
  }
};

constexpr FilterWorks kWorks = MakeWorks<VectorWork>();

}  // namespace

void FilterRows(const FilterPlanes& planes, int rows, int columns) {
  FilterQueues queues(planes, kWorks);
  const auto first_of = [columns](int vector) { return Least(vector * kLanes, columns - kLanes); };
  const int vectors = (columns + kLanes - 1) / kLanes;
  for (int row = 0; row < rows; ++row) {
    uint64_t filters[kTileSize / kLanes];  // for the whole row before any is queued: the two would wait for each other
    for (int i = 0; i < vectors; ++i) {
      const int place = row * kTileSize + first_of(i);
      Store(planes.staged + place, Load(planes.display + place));
      filters[i] = FiltersOf(planes.codes + place) & ~kUnchanged;
    }
    for (int i = 0; i < vectors; ++i)
      for (uint64_t left = filters[i]; left != 0; left &= left - 1)
        queues.Add(__builtin_ctzll(left), row * kTileSize + first_of(i));
  }
  queues.Finish();
}

}  // namespace kelvo::KELVO_TARGET
