// Blurs of discs over areas: several rows together, so that a cell is loaded once for all the rows that it counts in.
//
// Loads are what stencils cost. A strip of kRows rows reads, in the order of the cells, one vector per cell of the union
// of its footprints and adds it to each partial sum of each row that has the cell; all partial sums of the strip stay in
// registers. The taps are worked out at compile time, one unrolled function per width.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "stages/lanes.h"
#include "stages/stencil.h"
#include "stages/stencil_lanes.h"
#include "stages/stencils/disc.h"

namespace kelvo::KELVO_TARGET {
namespace {

#if defined(__AVX512F__) || defined(__aarch64__)
constexpr int kRegisters = 32;
#elif defined(__i386__)
constexpr int kRegisters = 8;
#else
constexpr int kRegisters = 16;
#endif
constexpr int kSpareRegisters = 4;  // for the cell, the total and the product
constexpr int kMostRows = 6;

// Rows of a strip for a stencil of `sums` partial sums, such that whole strips make kAreaRows; 1 means that a strip gains
// nothing.
constexpr int RowsFor(int sums) {
  int rows = std::clamp((kRegisters - kSpareRegisters) / sums, 1, kMostRows);
  while (kAreaRows % rows != 0) --rows;
  return rows;
}

// A cell, from the first cell of a strip's first row, and for each row the partial sums that have it, one bit each.
struct Tap {
  int offset = 0;
  std::array<uint32_t, kMostRows> sums{};
};

// How the blur of a width is worked: all its partial sums at once where they fit the registers for several rows, else in
// passes over some of them.
template <int kWidth>
struct Plan {
  static constexpr const disc::DiscBuilder& kBuilder = disc::kDisc<kWidth>;
  static constexpr int kReach = DiscReach(kWidth);
  static constexpr int kSums = static_cast<int>(kBuilder.View().sums.size());
  static constexpr int kPassSums = RowsFor(kSums) > 1 ? kSums : kRegisters / 4;
  static constexpr int kPasses = (kSums + kPassSums - 1) / kPassSums;
  static constexpr int kRows = RowsFor(kPassSums);

  // For every cell of the footprint the partial sums that have it.
  struct Footprint {
    uint32_t sums[2 * kReach + 1][2 * kReach + 1] = {};

    constexpr uint32_t At(int row, int column) const {
      return row < -kReach || row > kReach ? 0 : sums[row + kReach][column + kReach];
    }
  };

  static constexpr Footprint MakeFootprint() {
    Footprint footprint;
    const Stencil stencil = kBuilder.View();
    size_t next = 0;
    for (size_t sum = 0; sum < stencil.sums.size(); ++sum)
      for (int i = 0; i < stencil.sums[sum].count; ++i) {
        const CellStep step = StepOver(stencil.cells[next++]);
        footprint.sums[step.row + kReach][step.column + kReach] |= 1u << sum;
      }
    return footprint;
  }
  static constexpr Footprint kFootprint = MakeFootprint();
};

// The taps of one pass, and their additions.
template <int kWidth, int kPass>
struct Pass {
  using Plan = kelvo::KELVO_TARGET::Plan<kWidth>;
  static constexpr int kReach = Plan::kReach, kRows = Plan::kRows;
  static constexpr int kFirst = kPass * Plan::kPassSums;
  static constexpr int kSums = std::min(Plan::kPassSums, Plan::kSums - kFirst);
  static constexpr int kPlaces = kRows * kSums;  // the partial sums of all rows

  static constexpr Tap TapAt(int row, int column) {
    Tap tap{CellsTo(row, column), {}};
    for (int strip_row = 0; strip_row < kRows; ++strip_row)
      tap.sums[static_cast<size_t>(strip_row)] =
          Plan::kFootprint.At(row - strip_row, column) >> kFirst & ((1u << kSums) - 1);
    return tap;
  }

  static constexpr int Uses(const Tap& tap) {
    int uses = 0;
    for (const uint32_t sums : tap.sums) uses += std::popcount(sums);
    return uses;
  }

  static constexpr size_t CountTaps() {
    size_t count = 0;
    for (int row = -kReach; row < kReach + kRows; ++row)
      for (int column = -kReach; column <= kReach; ++column) count += Uses(TapAt(row, column)) > 0 ? 1 : 0;
    return count;
  }

  static constexpr auto MakeTaps() {
    std::array<Tap, CountTaps()> taps{};
    size_t count = 0;
    for (int row = -kReach; row < kReach + kRows; ++row)
      for (int column = -kReach; column <= kReach; ++column)
        if (const Tap tap = TapAt(row, column); Uses(tap) > 0) taps[count++] = tap;
    return taps;
  }
  static constexpr auto kTaps = MakeTaps();

  template <int kPlace>
  [[gnu::always_inline]] static inline void AddTo(Vector& sum, const Tap& tap, Vector cells) {
    if (tap.sums[kPlace / kSums] >> kPlace % kSums & 1) sum += cells;
  }

  template <size_t kTap, int... kPlace>
  [[gnu::always_inline]] static inline void AddTap(std::integer_sequence<int, kPlace...>, const int32_t* from,
                                                   Vector (&sums)[kPlaces]) {
    constexpr Tap kHere = kTaps[kTap];
    Vector cells = Load(from + kHere.offset);
    if constexpr (Uses(kHere) > 1) KeepLoaded(cells);
    (AddTo<kPlace>(sums[kPlace], kHere, cells), ...);
  }

  template <size_t... kTap>
  [[gnu::always_inline]] static inline void AddTaps(std::index_sequence<kTap...>, const int32_t* from,
                                                    Vector (&sums)[kPlaces]) {
    (AddTap<kTap>(std::make_integer_sequence<int, kPlaces>(), from, sums), ...);
  }

  [[gnu::always_inline]] static inline void AddTotals(const int32_t* from, Vector (&totals)[kRows]) {
    constexpr Stencil kStencil = Plan::kBuilder.View();
    Vector sums[kPlaces] = {};
    AddTaps(std::make_index_sequence<kTaps.size()>(), from, sums);
    for (int row = 0; row < kRows; ++row)
      for (int sum = 0; sum < kSums; ++sum)
        totals[row] +=
            ShiftRightArithmetic(sums[row * kSums + sum], kStencil.sums[static_cast<size_t>(kFirst + sum)].shift);
  }
};

template <int kWidth, int... kPass>
[[gnu::always_inline]] inline void AddPasses(std::integer_sequence<int, kPass...>, const int32_t* from,
                                             Vector (&totals)[Plan<kWidth>::kRows]) {
  (Pass<kWidth, kPass>::AddTotals(from, totals), ...);
}

// One vector of each row of a strip.
template <int kWidth>
void RunStrip(const Stencil& stencil, const int32_t* from, int32_t* to) {
  constexpr int kRows = Plan<kWidth>::kRows;
  Vector totals[kRows] = {};
  AddPasses<kWidth>(std::make_integer_sequence<int, Plan<kWidth>::kPasses>(), from, totals);
  for (int row = 0; row < kRows; ++row) Store(to + row * kTileSize, Normalised(stencil, totals[row]));
}

// The strips of one width; no rows where a strip gains nothing.
struct StripEntry {
  int rows = 0;
  void (*run)(const Stencil& stencil, const int32_t* from, int32_t* to) = nullptr;
};

template <int kWidth>
constexpr StripEntry MakeEntry() {
  if constexpr (Plan<kWidth>::kRows > 1) return {Plan<kWidth>::kRows, RunStrip<kWidth>};
  return {};
}

template <int... kWidthsBefore>
constexpr std::array<StripEntry, kMaxWidth + 1> MakeEntries(std::integer_sequence<int, kWidthsBefore...>) {
  return {StripEntry{}, MakeEntry<kWidthsBefore + 1>()...};
}

constexpr auto kStrips = MakeEntries(std::make_integer_sequence<int, kMaxWidth>());

}  // namespace

// The last strip and the last vector overlap those before them.
void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
  const StripEntry& strip = kStrips.data()[stencil.disc];
  if (strip.rows == 0 || extent.rows < strip.rows || extent.columns < kLanes) {
    for (int row = 0; row < extent.rows; ++row)
      StencilRow(stencil, from + row * kTileSize, to + row * kTileSize, extent.columns);
    return;
  }
  for (int done = 0; done < extent.rows; done += strip.rows) {
    const int row = (done + strip.rows <= extent.rows ? done : extent.rows - strip.rows) * kTileSize;
    for (int column = 0; column < extent.columns; column += kLanes) {
      const int cell = row + (column + kLanes <= extent.columns ? column : extent.columns - kLanes);
      strip.run(stencil, from + cell, to + cell);
    }
  }
}

}  // namespace kelvo::KELVO_TARGET
