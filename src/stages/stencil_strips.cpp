// Blurs of discs over areas: several rows together, so that a cell is loaded once for all the rows that it counts in.
//
// Loads are what stencils cost. A strip of a few rows reads, in the order of the cells, one vector per cell of the union
// of its footprints and adds it to each partial sum of each row that has the cell; all partial sums of the strip stay in
// registers. The additions are worked out at compile time, one unrolled function per width.
#include <algorithm>
#include <array>
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

// Checks at every load of every width would take compilers minutes: sanitized builds have the strips of these widths,
// and the others are checked between guard pages.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kGreatestWidth = 3;
#else
constexpr int kGreatestWidth = kMaxWidth;
#endif

// Rows of a strip for a stencil of `sums` partial sums, such that whole strips make kAreaRows; 1 means that a strip gains
// nothing.
constexpr int RowsFor(int sums) {
  int rows = std::clamp((kRegisters - kSpareRegisters) / sums, 1, kMostRows);
  while (kAreaRows % rows != 0) --rows;
  return rows;
}

// How the blur of a width is worked: all its partial sums at once where they fit the registers for several rows, else in
// passes over some of them.
template <int kWidth>
struct Plan {
  static constexpr disc::DiscBuilder kBuilder = disc::kDisc<kWidth>;  // a copy: some compilers emit what is referred to
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

// One addition of a strip: of the cell `column` of some row to a partial sum of one of the strip's rows.
struct Addition {
  int column = 0;
  int place = 0;       // which partial sum, counted over all rows of the strip
  bool loads = false;  // the first of its cell
  bool keeps = false;  // the cell has others
};

template <int kMost>
struct Additions {
  int count = 0;
  std::array<Addition, kMost> of{};
};

// The additions of one pass.
template <int kWidth, int kPass>
struct Pass {
  using Plan = kelvo::KELVO_TARGET::Plan<kWidth>;
  static constexpr int kReach = Plan::kReach, kRows = Plan::kRows;
  static constexpr int kFirst = kPass * Plan::kPassSums;
  static constexpr int kSums = std::min(Plan::kPassSums, Plan::kSums - kFirst);
  static constexpr int kPlaces = kRows * kSums;

  static constexpr bool Counts(int row, int column, int place) {
    return Plan::kFootprint.At(row - place / kSums, column) >> (kFirst + place % kSums) & 1;
  }

  static constexpr int Uses(int row, int column) {
    int uses = 0;
    for (int place = 0; place < kPlaces; ++place) uses += Counts(row, column, place) ? 1 : 0;
    return uses;
  }

  // What the cells of `row`, counted from the strip's first, are added to.
  static constexpr auto AdditionsOf(int row) {
    Additions<(2 * kReach + 1) * 2 * kMostRows> additions;
    for (int column = -kReach; column <= kReach; ++column) {
      const int uses = Uses(row, column);
      bool first = true;
      for (int place = 0; place < kPlaces; ++place) {
        if (!Counts(row, column, place)) continue;
        additions.of[static_cast<size_t>(additions.count++)] = {column, place, first, uses > 1};
        first = false;
      }
    }
    return additions;
  }

  [[gnu::always_inline]] static inline void Add(const Addition& addition, const int32_t* row, Vector& cells,
                                                Vector& sum) {
    if (addition.loads) cells = Load(row + addition.column);
    if (addition.loads && addition.keeps) KeepLoaded(cells);
    sum += cells;
  }

  template <int kRow, int... kIndex>
  [[gnu::always_inline]] static inline void AddRow(std::integer_sequence<int, kIndex...>,
                                                   [[maybe_unused]] const int32_t* row,
                                                   [[maybe_unused]] Vector (&sums)[kPlaces]) {
    [[maybe_unused]] constexpr auto kAdditions = AdditionsOf(kRow);  // none in some rows
    [[maybe_unused]] Vector cells{};
    (Add(kAdditions.of[kIndex], row, cells, sums[kAdditions.of[kIndex].place]), ...);
  }

  template <int... kRow>
  [[gnu::always_inline]] static inline void AddRows(std::integer_sequence<int, kRow...>, const int32_t* from,
                                                    Vector (&sums)[kPlaces]) {
    (AddRow<kRow - kReach>(std::make_integer_sequence<int, AdditionsOf(kRow - kReach).count>(),
                           from + CellsTo(kRow - kReach, 0), sums),
     ...);
  }

  [[gnu::always_inline]] static inline void AddTotals(const int32_t* from, Vector (&totals)[kRows]) {
    constexpr Stencil kStencil = Plan::kBuilder.View();
    Vector sums[kPlaces] = {};
    AddRows(std::make_integer_sequence<int, 2 * kReach + kRows>(), from, sums);
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
  if constexpr (kWidth <= kGreatestWidth)
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
