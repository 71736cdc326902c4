#include "round/family.h"

#include <utility>

namespace kelvo {
namespace {

struct TunedRow {
  int margin, extra, scale, final_margin;
};

// clang-format off
constexpr TunedRow kTuned[kMaxWidth] = {
    // margin extra scale final
    {  7, 0, 0,  2},  //  1
    {  7, 0, 0,  2},
    { 11, 0, 1,  3},
    { 11, 0, 1,  3},
    { 15, 0, 2,  4},  //  5
    { 15, 0, 3,  4},
    { 16, 1, 3,  5},
    { 17, 1, 3,  5},
    { 20, 1, 3,  6},
    { 20, 1, 3,  6},  // 10
    { 23, 1, 2,  7},  // scale dips to 2 here: intended
    { 23, 1, 2,  7},
    { 27, 2, 3,  8},
    { 27, 2, 3,  8},
    { 30, 2, 3,  9},  // 15
    { 30, 2, 3,  9},
    { 33, 2, 3, 10},
    { 33, 2, 3, 10},
    { 36, 2, 4, 11},
    { 36, 2, 4, 11},  // 20
};
// clang-format on

// A stage reads as far as its operator reaches into what the stage before it wrote.
constexpr RoundMember MakeMember(int width) {
  const TunedRow& row = kTuned[width - 1];
  const int reach = DiscReach(width);
  const bool shortcut = width <= 6;
  return {width,     row.margin,         row.extra,
          row.scale, row.final_margin,   width >= 8 ? 2 : 1,
          shortcut,  row.margin - reach, row.margin - (shortcut ? 2 * reach : reach)};
}

template <size_t... i>
constexpr std::array<RoundMember, kMaxWidth> MakeMembers(std::index_sequence<i...>) {
  return {MakeMember(static_cast<int>(i) + 1)...};
}

constexpr std::array<RoundMember, kMaxWidth> kMembers = MakeMembers(std::make_index_sequence<kMaxWidth>());

struct Footprint {
  std::array<int16_t, 600> cells{};
  size_t count = 0;
};

constexpr Footprint MakeFootprint(const Stencil& blur) {
  int farthest = 0;  // squared
  for (const int16_t cell : blur.cells) {
    const CellStep step = StepOver(cell);
    const int squared = step.row * step.row + step.column * step.column;
    farthest = squared > farthest ? squared : farthest;
  }
  const int limit = 29 * farthest / 18;
  constexpr int kReach = 14;
  Footprint footprint;
  for (int row = -kReach; row <= kReach; ++row)
    for (int column = -kReach; column <= kReach; ++column)
      if (row * row + column * column <= limit)
        footprint.cells[footprint.count++] = static_cast<int16_t>(CellsTo(row, column));
  return footprint;
}

template <int width>
constexpr Footprint kFootprint = MakeFootprint(disc::kDisc<width>.View());

template <size_t... i>
constexpr std::array<std::span<const int16_t>, kMaxWidth> MakeFootprints(std::index_sequence<i...>) {
  return {std::span<const int16_t>(kFootprint<static_cast<int>(i) + 1>.cells.data(),
                                   kFootprint<static_cast<int>(i) + 1>.count)...};
}

constexpr auto kFootprints = MakeFootprints(std::make_index_sequence<kMaxWidth>());

}  // namespace

const RoundMember& MemberOf(int width) {
  return kMembers[static_cast<size_t>(width - 1)];
}

std::span<const int16_t> FloorCells(int width) {
  return kFootprints[static_cast<size_t>(width - 1)];
}

}  // namespace kelvo
