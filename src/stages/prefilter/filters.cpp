#include "stages/prefilter/filters.h"

#include <string_view>

#include "stages/fixed_point.h"
#include "stages/prefilter/filter_table.h"
#include "stages/stencils/disc.h"
#include "stages/stencils/isotropic.h"

namespace kelvo {
namespace {

using Builder = DirectionalBuilder;

constexpr Builder kIdentity = Builder().Sum(0, {kCentre});
constexpr Stencil kIdentityView = kIdentity.View();

struct ViewTable {
  Stencil views[kFilterRows][kDirections];
};

constexpr ViewTable MakeViews() {
  ViewTable table{};
  for (int row = 0; row < kFilterRows; ++row)
    for (int direction = 0; direction < kDirections; ++direction)
      table.views[row][direction] = kDirectionals.builders[row][direction].View();
  return table;
}

constexpr ViewTable kViews = MakeViews();

// Names of the pre-smoothers: i identity, 1..5 isotropic, A and B the smoothing operators of round widths 16 and 17,
// C, D, E, F the blurs of round widths 2, 4, 6 and 7. Columns: RemoveNoise -1, 0, 1, 2, 3.
constexpr std::string_view kRoundPreSmoothers[7] = {"ii12A", "i123B", "12CB5", "12345", "12ADE", "1CA4E", "2CADF"};
constexpr std::string_view kMotionPreSmoothers = "i123B";

const Stencil& NamedSmoother(char name) {
  switch (name) {
    case 'i':
      return kIdentityView;
    case 'A':
      return ObservedSmoother(16);
    case 'B':
      return ObservedSmoother(17);
    case 'C':
      return DiscBlur(2);
    case 'D':
      return DiscBlur(4);
    case 'E':
      return DiscBlur(6);
    case 'F':
      return DiscBlur(7);
    default:
      return Isotropic(name - '0');
  }
}

}  // namespace

const Stencil& PrefilterFilter(int row, int direction) {
  if (direction < kDirections) return kViews.views[row][direction];
  return row == 0 ? kIdentityView : Isotropic(row);
}

const Stencil& PreSmoother(const TileParams& params) {
  const int row = Clamp(BlurWidth(params), 1, 7) - 1;
  const std::string_view names = IsMotion(params) ? kMotionPreSmoothers : kRoundPreSmoothers[row];
  return NamedSmoother(names[static_cast<size_t>(Clamp(params.RemoveNoise, -1, 3) + 1)]);
}

}  // namespace kelvo
