#include "stages/stencils/isotropic.h"

#include "stages/stencils/disc.h"
#include "stages/stencils/isotropic_table.h"

namespace kelvo {
namespace {

using Builder = IsotropicBuilder;

// One row per operator: weights by class in units of 2^-unit. Every power of two is one partial sum of the cells whose
// weight has that bit.
struct SmootherRow {
  int unit, centre, axis, corner, axis2, knight;
};

constexpr Builder MakeSmoother(const SmootherRow& row) {
  const struct {
    CellClass cells;
    int weight;
  } classes[] = {
      {kCentre, row.centre}, {kAxis, row.axis}, {kCorner, row.corner}, {kAxis2, row.axis2}, {kKnight, row.knight}};
  Builder builder;
  for (int bit = 3; bit >= 0; --bit) {
    bool open = false;
    for (const auto& c : classes) {
      if ((c.weight >> bit & 1) == 0) continue;
      if (!open) builder.Open(row.unit - bit);
      open = true;
      for (int y = -2; y <= 2; ++y)
        for (int x = -2; x <= 2; ++x)
          if (IsIn(c.cells, y, x)) builder.Add(y, x);
    }
  }
  return builder.Normalise();
}

//                                           unit centre axis corner axis2 knight
constexpr Builder kSmoother7 = MakeSmoother({2, 8, 1, 0, 0, 0});
constexpr Builder kSmoothers13To20[8] = {
    MakeSmoother({5, 8, 8, 7, 1, 0}),
    MakeSmoother({5, 8, 8, 7, 2, 0}),
    MakeSmoother({5, 8, 8, 8, 4, 1}),
    MakeSmoother({5, 8, 8, 8, 2, 1}),
    MakeSmoother({5, 8, 8, 8, 4, 3}),
    MakeSmoother({5, 8, 8, 7, 2, 1}),
    kIsotropics[3],  // width 19: the disc of 21 cells
    MakeSmoother({5, 8, 8, 8, 5, 3}),
};

constexpr Stencil kIsotropicViews[5] = {kIsotropics[0].View(), kIsotropics[1].View(), kIsotropics[2].View(),
                                        kIsotropics[3].View(), kIsotropics[4].View()};
constexpr Stencil kSmoother7View = kSmoother7.View();
constexpr Stencil kSmootherViews[8] = {
    kSmoothers13To20[0].View(), kSmoothers13To20[1].View(), kSmoothers13To20[2].View(), kSmoothers13To20[3].View(),
    kSmoothers13To20[4].View(), kSmoothers13To20[5].View(), kSmoothers13To20[6].View(), kSmoothers13To20[7].View()};

}  // namespace

const Stencil& Isotropic(int strength) {
  return kIsotropicViews[strength - 1];
}

const Stencil& ObservedSmoother(int width) {
  if (width == 7) return kSmoother7View;
  if (width <= 12) return DiscBlur(width == 8 ? 1 : 2);
  return kSmootherViews[width - 13];
}

}  // namespace kelvo
