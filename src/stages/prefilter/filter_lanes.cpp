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

// Of eight cells at most: the more cells, the more filters, and the more loads that straddle two lines of the cache.
constexpr int kBytes = kVectorBytes < 32 ? kVectorBytes : 32;
constexpr int kCells = kBytes / 4;
using Cells = uint32_t __attribute__((vector_size(kBytes)));
using SignedCells = int32_t __attribute__((vector_size(kBytes)));
using Bits64 = uint64_t __attribute__((vector_size(kBytes)));

Cells LoadCells(const int32_t* cells) {
  Cells v;
  std::memcpy(&v, cells, sizeof v);
  return v;
}
void StoreCells(int32_t* cells, Cells v) {
  std::memcpy(cells, &v, sizeof v);
}

constexpr uint32_t kKind = kRowMask << kRowShift | kDirectional;  // row, and whether the direction counts
constexpr uint64_t kUnchanged = uint64_t{1} << kDirections;       // the filter of row 0

// The numbers of the filters of a vector of cells, each as a bit.
uint64_t FiltersOf(const int32_t* codes) {
  const Cells code = LoadCells(codes);
  const Cells row = code >> kRowShift & kRowMask;
  const Cells direction = (code & kDirectional) == kDirectional ? code & kDirectionMask : Cells{} + kDirections;
  const auto pairs = reinterpret_cast<Bits64>(row * (kDirections + 1) + direction);
  const Bits64 one = Bits64{} + 1;
  const Bits64 bits = one << (pairs & 0xFFFFFFFFu) | one << (pairs >> 32);
  uint64_t present = 0;
  for (int i = 0; i < kCells / 2; ++i) present |= bits[i];
  return present;
}

constexpr int Least(int a, int b) {
  return a < b ? a : b;
}

struct VectorCells {
  static Cells At(const int32_t* cells) { return LoadCells(cells); }
  static Cells Shifted(Cells v, int shift) {
    return reinterpret_cast<Cells>(reinterpret_cast<SignedCells>(v) >> shift);
  }
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
      const Cells code = LoadCells(planes.codes + places[i]);
      const Cells filtered = Filtered<VectorCells, kNumber>(planes.display + places[i]);
      int32_t* to = planes.staged + places[i];
      StoreCells(to, (code & kMask) == kWanted ? filtered : LoadCells(to));
    }
  }
};

constexpr FilterWorks kWorks = MakeWorks<VectorWork>();

}  // namespace

void FilterRows(const FilterPlanes& planes, int rows, int columns) {
  FilterQueues queues(planes, kWorks);
  const auto first_of = [columns](int vector) { return Least(vector * kCells, columns - kCells); };
  const int vectors = (columns + kCells - 1) / kCells;
  for (int row = 0; row < rows; ++row) {
    uint64_t filters[kTileSize / kCells];  // for the whole row before any is queued: the two would wait for each other
    for (int i = 0; i < vectors; ++i) {
      const int place = row * kTileSize + first_of(i);
      StoreCells(planes.staged + place, LoadCells(planes.display + place));
      filters[i] = FiltersOf(planes.codes + place) & ~kUnchanged;
    }
    for (int i = 0; i < vectors; ++i)
      for (uint64_t left = filters[i]; left != 0; left &= left - 1)
        queues.Add(__builtin_ctzll(left), row * kTileSize + first_of(i));
  }
  queues.Finish();
}

}  // namespace kelvo::KELVO_TARGET
