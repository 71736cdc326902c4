// The blur model of round widths 1..20: discs with a soft rim.
#ifndef KELVO_STAGES_STENCILS_DISC_H
#define KELVO_STAGES_STENCILS_DISC_H

#include "stages/stencil.h"

namespace kelvo {

inline constexpr int kMaxWidth = 20;

// The blur of round width 1..20, weights summing to one. It reaches DiscReach(width) rows and columns.
const Stencil& DiscBlur(int width);

// 1 1 2 2 3 3 .. 10 10 for widths 1..20.
constexpr int DiscReach(int width) {
  return (width + 1) / 2;
}

// The rest builds the stencils at compile time; kDisc<width> is what DiscBlur(width) shows.
namespace disc {

using DiscBuilder = StencilBuilder<400, 16>;

inline constexpr CellClass kNone{0, 0};

// Cells within the squared radius weigh one unit of 2^-unit, the rim classes 3/4, 1/2 or 1/4 of it.
struct DiscRow {
  int unit, squared_radius;
  CellClass three_quarters[2], half[3], quarter[2];
};

// clang-format off
inline constexpr DiscRow kDiscs[kMaxWidth + 1] = {
    {},
    //  unit  r^2  3/4 unit               1/2 unit                       1/4 unit
    {     1,    0, {kNone, kNone},        {kNone, kNone, kNone},         {{0, 1}, kNone}    },  //  1
    {     1,    1, {kNone, kNone},        {{1, 1}, kNone, kNone},        {kNone, kNone}     },
    {     2,    2, {kNone, kNone},        {{0, 2}, kNone, kNone},        {{1, 2}, kNone}    },
    {     3,    4, {{1, 2}, kNone},       {kNone, kNone, kNone},         {{2, 2}, kNone}    },
    {     3,    5, {{2, 2}, kNone},       {{0, 3}, kNone, kNone},        {{1, 3}, kNone}    },  //  5
    {     4,   10, {kNone, kNone},        {kNone, kNone, kNone},         {{2, 3}, kNone}    },
    {     4,   13, {kNone, kNone},        {{0, 4}, {1, 4}, kNone},       {{3, 3}, kNone}    },
    {     6,   17, {{3, 3}, kNone},       {{2, 4}, kNone, kNone},        {kNone, kNone}     },
    {     5,   20, {kNone, kNone},        {{0, 5}, {1, 5}, {3, 4}},      {{2, 5}, kNone}    },
    {     5,   26, {{2, 5}, kNone},       {{4, 4}, kNone, kNone},        {{3, 5}, kNone}    },  // 10
    {     5,   29, {{3, 5}, {4, 4}},      {{0, 6}, {1, 6}, kNone},       {{2, 6}, kNone}    },
    {     6,   37, {{2, 6}, {4, 5}},      {kNone, kNone, kNone},         {{3, 6}, kNone}    },
    {     6,   45, {kNone, kNone},        {{0, 7}, {1, 7}, {5, 5}},      {{2, 7}, {4, 6}}   },
    {     6,   50, {{2, 7}, {4, 6}},      {{3, 7}, kNone, kNone},        {{5, 6}, kNone}    },
    {     6,   58, {{5, 6}, kNone},       {{0, 8}, {1, 8}, {4, 7}},      {{2, 8}, kNone}    },  // 15
    {     6,   65, {{2, 8}, kNone},       {{3, 8}, {5, 7}, {6, 6}},      {kNone, kNone}     },
    {     6,   74, {kNone, kNone},        {{0, 9}, {1, 9}, {4, 8}},      {{2, 9}, {6, 7}}   },
    {     7,   82, {{2, 9}, {6, 7}},      {{3, 9}, {5, 8}, kNone},       {{4, 9}, kNone}    },
    {     7,   90, {{4, 9}, {7, 7}},      {{0, 10}, {1, 10}, {6, 8}},    {{2, 10}, {5, 9}}  },
    {     7,  101, {{2, 10}, {5, 9}},     {{3, 10}, {7, 8}, kNone},      {{4, 10}, {6, 9}}  },  // 20
};
// clang-format on

constexpr bool IsRim(const CellClass& c, int row, int column) {
  return c.b != 0 && IsIn(c, row, column);
}

template <size_t n, size_t m>
constexpr auto EitherRim(const CellClass (&first)[n], const CellClass (&second)[m]) {
  return [&](int row, int column) {
    for (const CellClass& c : first)
      if (IsRim(c, row, column)) return true;
    for (const CellClass& c : second)
      if (IsRim(c, row, column)) return true;
    return false;
  };
}

constexpr bool IsFull(const DiscRow& disc, int row, int column) {
  return row * row + column * column <= disc.squared_radius;
}

// To how many partial sums of at most 32 cells the full cells are dealt.
constexpr int Hands(const DiscRow& disc) {
  int cells = 0;
  for (int row = -DiscBuilder::kReach; row <= DiscBuilder::kReach; ++row)
    for (int column = -DiscBuilder::kReach; column <= DiscBuilder::kReach; ++column)
      cells += IsFull(disc, row, column) ? 1 : 0;
  const int fewest = (cells + 31) / 32;
  return cells < 10 ? 1 : fewest > 2 ? fewest : 2;
}

// A rim cell of 3/4 counts in the sum of the halves and in that of the quarters.
constexpr DiscBuilder MakeDisc(const DiscRow& disc) {
  DiscBuilder builder;
  builder.Deal(Hands(disc), disc.unit, [&](int row, int column) { return IsFull(disc, row, column); });
  if (disc.half[0].b != 0 || disc.three_quarters[0].b != 0)
    builder.Deal(1, disc.unit + 1, EitherRim(disc.half, disc.three_quarters));
  if (disc.quarter[0].b != 0 || disc.three_quarters[0].b != 0)
    builder.Deal(1, disc.unit + 2, EitherRim(disc.quarter, disc.three_quarters));
  return builder.Normalise();
}

template <int width>
inline constexpr DiscBuilder kDisc = MakeDisc(kDiscs[width]);

}  // namespace disc

}  // namespace kelvo

#endif  // KELVO_STAGES_STENCILS_DISC_H
