// Blurs over areas, several rows together, so that a cell is loaded once for all the rows that it counts in.
//
// Loads are what stencils cost. A strip of a few rows reads, in the order of the cells, one vector per cell of the union
// of its footprints and adds it to each partial sum of each row that has the cell; all partial sums of the strip stay in
// registers. The additions are worked out at compile time, one unrolled function per shape.
//
// A shape is a type with the storage of its stencil, `kBuilder`; `kReach`, how many rows and columns it reaches; and
// `kMostRows`, which its strips may have at most.
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
};

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

  // Calls `work(cell, place)` for every addition: the cell by number in the union of the rows' footprints.
  template <class Work>
  static constexpr void ForAdditions(Work work) {
    const Stencil stencil = Plan::kBuilder.View();
    for (int row = 0; row < kRows; ++row) {
      size_t next = 0;
      for (int sum = 0; sum < kFirst + kSums; ++sum)
        for (int i = 0; i < stencil.sums[static_cast<size_t>(sum)].count; ++i) {
          const CellStep step = StepOver(stencil.cells[next++]);
          if (sum < kFirst) continue;
          work(static_cast<size_t>((step.row + kReach + row) * kWide + step.column + kReach),
               row * kSums + sum - kFirst);
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
    std::array<size_t, kUnionRows + 1> first{};  // by row of the union
    std::array<Addition, CountAdditions()> of{};
  };

  static constexpr Additions MakeAdditions() {
    std::array<size_t, kUnionRows * kWide + 1> start{};  // by cell
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

  template <size_t... kRow>
  [[gnu::always_inline]] static inline void AddRows(std::index_sequence<kRow...>, const int32_t* from,
                                                    Vector (&sums)[kPlaces]) {
    (AddRow<kAdditions.first[kRow]>(std::make_index_sequence<kAdditions.first[kRow + 1] - kAdditions.first[kRow]>(),
                                    from + CellsTo(static_cast<int>(kRow) - kReach, 0), sums),
     ...);
  }

  [[gnu::always_inline]] static inline void AddTotals(const int32_t* from, Vector (&totals)[kRows]) {
    constexpr Stencil kStencil = Plan::kBuilder.View();
    Vector sums[kPlaces] = {};
    AddRows(std::make_index_sequence<kUnionRows>(), from, sums);
    for (int row = 0; row < kRows; ++row)
      for (int sum = 0; sum < kSums; ++sum)
        totals[row] += Shifted(sums[row * kSums + sum], kStencil.sums[static_cast<size_t>(kFirst + sum)].shift);
  }
};

template <class Shape, int... kPass>
[[gnu::always_inline]] inline void AddPasses(std::integer_sequence<int, kPass...>, const int32_t* from,
                                             Vector (&totals)[StripPlan<Shape>::kRows]) {
  (StripPass<Shape, kPass>::AddTotals(from, totals), ...);
}

// One vector of each row of a strip.
template <class Shape>
void RunStrip(const Stencil& stencil, const int32_t* from, int32_t* to) {
  constexpr int kRows = StripPlan<Shape>::kRows;
  Vector totals[kRows] = {};
  AddPasses<Shape>(std::make_integer_sequence<int, StripPlan<Shape>::kPasses>(), from, totals);
  for (int row = 0; row < kRows; ++row) Store(to + row * kTileSize, Normalised(stencil, totals[row]));
}

// The strip of a shape; no rows where there is none or it gains nothing.
struct Strip {
  int rows = 0;
  void (*run)(const Stencil& stencil, const int32_t* from, int32_t* to) = nullptr;
};

template <class Shape, int kWidth>
constexpr Strip MakeStrip() {
  if constexpr (kWidth <= kGreatestStripWidth)
    if constexpr (StripPlan<Shape>::kRows > 1) return {StripPlan<Shape>::kRows, RunStrip<Shape>};
  return {};
}

// The last strip and the last vector overlap those before them.
inline void RunStrips(const Strip& strip, const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
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

#endif  // KELVO_STAGES_STRIPS_H
