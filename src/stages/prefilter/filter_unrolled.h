// The filters that class codes choose, as straight-line code: one function each, made from the tables while compiling.
#ifndef KELVO_STAGES_PREFILTER_FILTER_UNROLLED_H
#define KELVO_STAGES_PREFILTER_FILTER_UNROLLED_H

#include <utility>

#include "stages/prefilter/filter_table.h"
#include "stages/stencils/isotropic_table.h"
#include "stages/target.h"

namespace kelvo::KELVO_TARGET {

constexpr Stencil FilterOf(int number) {
  const int row = number / (kDirections + 1), direction = number % (kDirections + 1);
  return direction < kDirections ? kDirectionals.builders[row][direction].View() : kIsotropics[row - 1].View();
}

// Cell by cell and sum by sum as constants, so that nothing of them is left to look up.
template <int kNumber>
inline constexpr Stencil kFilter = FilterOf(kNumber);
template <int kNumber, size_t kCell>
inline constexpr int kDistance = kFilter<kNumber>.cells[kCell];
template <int kNumber, size_t kSum>
inline constexpr PartialSum kPart = kFilter<kNumber>.sums[kSum];

constexpr size_t CellsBefore(const Stencil& filter, size_t sum) {
  size_t cells = 0;
  for (size_t s = 0; s < sum; ++s) cells += static_cast<size_t>(filter.sums[s].count);
  return cells;
}

template <class Cells, int kNumber, size_t kFirst, size_t... kCell>
auto SumOfCells(const int32_t* at, std::index_sequence<kCell...> /*cells*/) {
  return (Cells::At(at + kDistance<kNumber, kFirst + kCell>) + ...);
}

template <class Cells, int kNumber, size_t... kSum>
auto SumOfParts(const int32_t* at, std::index_sequence<kSum...> /*sums*/) {
  static_assert(((kPart<kNumber, kSum>.shift >= 0) && ...));
  return (Cells::Shifted(SumOfCells<Cells, kNumber, CellsBefore(kFilter<kNumber>, kSum)>(
                             at, std::make_index_sequence<static_cast<size_t>(kPart<kNumber, kSum>.count)>()),
                         kPart<kNumber, kSum>.shift) +
          ...);
}

// The filter's value at a cell, or at each of a vector of them: Cells::At gives those at an address, Cells::Shifted
// shifts them to the right as signed numbers. The weights of the filters sum to one, so that nothing is normalised.
template <class Cells, int kNumber>
auto Filtered(const int32_t* at) {
  static_assert(kFilter<kNumber>.normaliser == 0);
  return SumOfParts<Cells, kNumber>(at, std::make_index_sequence<kFilter<kNumber>.sums.size()>());
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_PREFILTER_FILTER_UNROLLED_H
