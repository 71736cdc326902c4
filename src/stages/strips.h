// Blurs over areas, several rows together, so that a cell is loaded once for all the rows that it counts in.
//
// Loads are what stencils cost. A strip of a few rows reads, in the order of the cells, one vector per cell of the union
// of its footprints and adds it to each partial sum of each row that has the cell; all partial sums of the strip stay in
// registers. The additions are worked out at compile time, one unrolled function per shape.
//
// Where partial sums have cells of a row that lie a fixed distance apart, as those of wide discs do, pairs of such cells
// are added in advance: every pair serves all rows of the area that it counts in.
//
// A shape is a type with the storage of its stencil, `kBuilder`; `kReach`, how many rows and columns it reaches;
// `kMostRows`, which its strips may have at most; and `kApart`, how far apart the cells of a pair lie, 0 if none are paired.
#ifndef KELVO_STAGES_STRIPS_H
#define KELVO_STAGES_STRIPS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "stages/lanes.h"
#include "stages/stencil.h"
#include "stages/stencil_lanes.h"

namespace kelvo::KELVO_TARGET {

#if defined(__AVX512F__) || defined(__aarch64__)
inline constexpr int kRegisters = 32;
#elif defined(__i386__)
inline constexpr int kRegisters = 8;
#else
inline constexpr int kRegisters = 16;
#endif
inline constexpr int kSpareRegisters = 4;  // for the cell, the total and the product

// Checks at every load of every width would take compilers minutes: sanitized builds have the strips of these widths,
// and the others are checked between guard pages.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int kGreatestStripWidth = 3;
#else
inline constexpr int kGreatestStripWidth = 255;
#endif

// Rows of a strip for a stencil of `sums` partial sums, such that whole strips make kAreaRows; 1 means that a strip gains
// nothing.
constexpr int RowsFor(int sums, int most) {
  int rows = std::clamp((kRegisters - kSpareRegisters) / sums, 1, most);
  while (kAreaRows % rows != 0) --rows;
  return rows;
}

// How the blur of a shape is worked: all its partial sums at once where they fit the registers for several rows, else in
// passes over some of them.
template <class Shape>
struct StripPlan {
  static constexpr auto kBuilder = Shape::kBuilder;  // a copy: some compilers emit what is referred to
  static constexpr int kReach = Shape::kReach;
  static constexpr int kSums = static_cast<int>(kBuilder.View().sums.size());
  static constexpr int kPassSums = RowsFor(kSums, Shape::kMostRows) > 1 ? kSums : kRegisters / 4;
  static constexpr int kPasses = (kSums + kPassSums - 1) / kPassSums;
  static constexpr int kRows = RowsFor(kPassSums, Shape::kMostRows);
  static constexpr int kApart = Shape::kApart;
};

// A strip reads the cells and, if cells are paired, `pairs`: the sums of the cells and of those kApart columns ahead, in
// rows that lie so far apart.
inline constexpr int kPairStride = 96;

// One addition of a strip: of the cell `column` of some row to a partial sum of one of the strip's rows.
struct Addition {
  int column = 0;
  int place = 0;       // which partial sum, counted over all rows of the strip
  bool loads = false;  // the first of its cell
  bool keeps = false;  // and the cell has others
};

// The additions of one pass.
template <class Shape, int kPass>
struct StripPass {
  using Plan = StripPlan<Shape>;
  static constexpr int kReach = Plan::kReach, kRows = Plan::kRows;
  static constexpr int kFirst = kPass * Plan::kPassSums;
  static constexpr int kSums = std::min(Plan::kPassSums, Plan::kSums - kFirst);
  static constexpr int kPlaces = kRows * kSums;

  static constexpr int kWide = 2 * kReach + 1, kUnionRows = 2 * kReach + kRows;
  static constexpr int kSourceRows = Plan::kApart == 0 ? kUnionRows : 2 * kUnionRows;  // behind the cells' the pairs'

  // Calls `work(cell, place)` for every addition: the cell, or pair, by number in the union of the rows' footprints.
  template <class Work>
  static constexpr void ForAdditions(Work work) {
    const Stencil stencil = Plan::kBuilder.View();
    for (int row = 0; row < kRows; ++row) {
      size_t next = 0;
      for (int sum = 0; sum < kFirst + kSums; ++sum)
        for (int left = stencil.sums[static_cast<size_t>(sum)].count; left > 0;) {
          const int cell = stencil.cells[next];
          const bool paired = Plan::kApart != 0 && left > 1 && stencil.cells[next + 1] == cell + Plan::kApart;
          left -= paired ? 2 : 1;
          next += paired ? 2 : 1;
          const CellStep step = StepOver(cell);
          const int source_row = step.row + kReach + row + (paired ? kUnionRows : 0);
          if (sum >= kFirst)
            work(static_cast<size_t>(source_row * kWide + step.column + kReach), row * kSums + sum - kFirst);
        }
    }
  }

  static constexpr size_t CountAdditions() {
    size_t count = 0;
    ForAdditions([&count](size_t, int) { ++count; });
    return count;
  }

  // In the order of the cells.
  struct Additions {
    std::array<size_t, kSourceRows + 1> first{};  // by row
    std::array<Addition, CountAdditions()> of{};
  };

  static constexpr Additions MakeAdditions() {
    std::array<size_t, kSourceRows * kWide + 1> start{};  // by cell
    ForAdditions([&start](size_t cell, int) { ++start[cell + 1]; });
    for (size_t cell = 1; cell < start.size(); ++cell) start[cell] += start[cell - 1];
    Additions additions;
    for (size_t row = 0; row < additions.first.size(); ++row) additions.first[row] = start[row * kWide];
    auto next = start;
    ForAdditions([&](size_t cell, int place) {
      const size_t at = next[cell]++;
      const bool loads = at == start[cell], keeps = loads && start[cell + 1] - at > 1;
      additions.of[at] = {static_cast<int>(cell) % kWide - kReach, place, loads, keeps};
    });
    return additions;
  }
  static constexpr Additions kAdditions = MakeAdditions();

  template <size_t kStart, size_t... kIndex>
  [[gnu::always_inline]] static inline void AddRow(std::index_sequence<kIndex...>, [[maybe_unused]] const int32_t* row,
                                                   [[maybe_unused]] Vector (&sums)[kPlaces]) {
    [[maybe_unused]] Vector cells{};  // some rows have none
    ((kAdditions.of[kStart + kIndex].loads ? void(cells = Load(row + kAdditions.of[kStart + kIndex].column)) : void(),
      kAdditions.of[kStart + kIndex].keeps ? KeepLoaded(cells) : void(),
      sums[kAdditions.of[kStart + kIndex].place] += cells),
     ...);
  }

  [[gnu::always_inline]] static inline const int32_t* SourceRow(const int32_t* cells, const int32_t* pairs, int row) {
    return row < kUnionRows ? cells + CellsTo(row - kReach, 0) : pairs + (row - kUnionRows - kReach) * kPairStride;
  }

  template <size_t... kRow>
  [[gnu::always_inline]] static inline void AddRows(std::index_sequence<kRow...>, const int32_t* cells,
                                                    const int32_t* pairs, Vector (&sums)[kPlaces]) {
    (AddRow<kAdditions.first[kRow]>(std::make_index_sequence<kAdditions.first[kRow + 1] - kAdditions.first[kRow]>(),
                                    SourceRow(cells, pairs, static_cast<int>(kRow)), sums),
     ...);
  }

  [[gnu::always_inline]] static inline void AddTotals(const int32_t* cells, const int32_t* pairs,
                                                      Vector (&totals)[kRows]) {
    constexpr Stencil kStencil = Plan::kBuilder.View();
    Vector sums[kPlaces] = {};
    AddRows(std::make_index_sequence<kSourceRows>(), cells, pairs, sums);
    for (int row = 0; row < kRows; ++row)
      for (int sum = 0; sum < kSums; ++sum)
        totals[row] += Shifted(sums[row * kSums + sum], kStencil.sums[static_cast<size_t>(kFirst + sum)].shift);
  }
};

template <class Shape, int... kPass>
[[gnu::always_inline]] inline void AddPasses(std::integer_sequence<int, kPass...>, const int32_t* cells,
                                             const int32_t* pairs, Vector (&totals)[StripPlan<Shape>::kRows]) {
  (StripPass<Shape, kPass>::AddTotals(cells, pairs, totals), ...);
}

// One vector of each row of a strip.
template <class Shape>
void RunStrip(const Stencil& stencil, const int32_t* cells, const int32_t* pairs, int32_t* to) {
  constexpr int kRows = StripPlan<Shape>::kRows;
  Vector totals[kRows] = {};
  AddPasses<Shape>(std::make_integer_sequence<int, StripPlan<Shape>::kPasses>(), cells, pairs, totals);
  for (int row = 0; row < kRows; ++row) Store(to + row * kTileSize, Normalised(stencil, totals[row]));
}

// The strip of a shape; no rows where there is none or it gains nothing.
struct Strip {
  int rows = 0, reach = 0, apart = 0;
  void (*run)(const Stencil& stencil, const int32_t* cells, const int32_t* pairs, int32_t* to) = nullptr;
};

template <class Shape, int kWidth>
constexpr Strip MakeStrip() {
  if constexpr (kWidth <= kGreatestStripWidth)
    if constexpr (StripPlan<Shape>::kRows > 1)
      return {StripPlan<Shape>::kRows, Shape::kReach, Shape::kApart, RunStrip<Shape>};
  return {};
}

// Calls `work(start, size)` for parts of 0 .. whole - 1 of at most `most` and at least `least`; the last one overlaps the
// one before it where it would be smaller.
template <class Work>
inline void ForParts(int whole, int most, int least, Work work) {
  for (int done = 0; done < whole; done += most) {
    const int start = std::min(done, whole - least);
    work(start, std::min(most, whole - start));
  }
}

// Strips over an area; `pairs` lie as the cells do, but for their stride.
inline void RunBlock(const Strip& strip, const Stencil& stencil, const int32_t* cells, const int32_t* pairs,
                     int32_t* to, Extent extent) {
  ForParts(extent.rows, strip.rows, strip.rows, [&](int row, int) {
    const int32_t *cell_row = cells + row * kTileSize, *pair_row = pairs + row * kPairStride;
    ForParts(extent.columns, kLanes, kLanes, [&](int column, int) {
      strip.run(stencil, cell_row + column, pair_row + column, to + row * kTileSize + column);
    });
  });
}

// The pairs of all cells that the stencils of a small area reach.
class PairBlock {
 public:
  static constexpr int kRows = 2 * kAreaRows, kColumns = 64;  // of the area, at most

  // `cells`: the first cell of the area.
  PairBlock(const Strip& strip, const int32_t* cells, Extent extent) {
    const int count = extent.columns + 2 * strip.reach - strip.apart;
    for (int row = -strip.reach; row < extent.rows + strip.reach; ++row) {
      const int32_t* from = cells + row * kTileSize - strip.reach;
      int32_t* to = pairs_ + At(row, -strip.reach);
      ForParts(count, kLanes, kLanes,
               [&](int column, int) { Store(to + column, Load(from + column) + Load(from + column + strip.apart)); });
    }
  }

  const int32_t* first() const { return pairs_ + At(0, 0); }

 private:
  static constexpr int kMostReach = 10;
  static_assert(kColumns + 2 * kMostReach <= kPairStride);

  static constexpr int At(int row, int column) { return (row + kMostReach) * kPairStride + column + kMostReach; }

  int32_t pairs_[(kRows + 2 * kMostReach) * kPairStride];
};

inline void RunStrips(const Strip& strip, const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
  if (strip.rows == 0 || extent.rows < strip.rows || extent.columns < kLanes) {
    for (int row = 0; row < extent.rows; ++row)
      StencilRow(stencil, from + row * kTileSize, to + row * kTileSize, extent.columns);
    return;
  }
  if (strip.apart == 0) return RunBlock(strip, stencil, from, from, to, extent);
  ForParts(extent.rows, PairBlock::kRows, strip.rows, [&](int row, int rows) {
    ForParts(extent.columns, PairBlock::kColumns, kLanes, [&](int column, int columns) {
      const int cell = row * kTileSize + column;
      const PairBlock pairs(strip, from + cell, {rows, columns});
      RunBlock(strip, stencil, from + cell, pairs.first(), to + cell, {rows, columns});
    });
  });
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_STRIPS_H
