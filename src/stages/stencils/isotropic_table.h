// The cells of Isotropic(1..5), for those who need them while compiling.
#ifndef KELVO_STAGES_STENCILS_ISOTROPIC_TABLE_H
#define KELVO_STAGES_STENCILS_ISOTROPIC_TABLE_H

#include "stages/stencil.h"

namespace kelvo {

using IsotropicBuilder = StencilBuilder<64, 8>;

constexpr bool InDisc8(int row, int column) {
  return row * row + column * column <= 8;
}
constexpr bool InDisc1(int row, int column) {
  return row * row + column * column <= 1;
}
constexpr bool InSquare1(int row, int column) {
  return row * row <= 1 && column * column <= 1;
}

constexpr IsotropicBuilder kIsotropics[5] = {
    IsotropicBuilder().Sum(1, {kCentre}).Sum(3, {kAxis}),
    IsotropicBuilder().Sum(2, {kCentre}).Sum(3, {kAxis}).Sum(4, {kCorner}),
    IsotropicBuilder().Deal(2, 3, InDisc1).Sum(4, {kCorner}).Sum(5, {kCorner}),
    IsotropicBuilder().Deal(2, 4, InSquare1).Sum(5, {kKnight, kAxis2}).Sum(6, {kAxis2}),
    IsotropicBuilder().Deal(2, 5, InDisc8).Sum(6, {{0, 3}, {1, 3}}).Sum(7, {{0, 3}}),
};

}  // namespace kelvo

#endif  // KELVO_STAGES_STENCILS_ISOTROPIC_TABLE_H
