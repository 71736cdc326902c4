#include "stages/stencils/disc.h"

#include <utility>

namespace kelvo {
namespace {

template <int width>
constexpr Stencil MakeView() {
  Stencil view = disc::kDisc<width>.View();
  view.disc = width;
  return view;
}

template <size_t... widths>
constexpr std::array<Stencil, kMaxWidth> MakeViews(std::index_sequence<widths...>) {
  return {MakeView<static_cast<int>(widths) + 1>()...};
}

constexpr std::array<Stencil, kMaxWidth> kViews = MakeViews(std::make_index_sequence<kMaxWidth>());

}  // namespace

const Stencil& DiscBlur(int width) {
  return kViews[static_cast<size_t>(width - 1)];
}

}  // namespace kelvo
