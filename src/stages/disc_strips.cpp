// The blurs of discs in strips (strips.h), and the areas of all stencils that have none.
#include "stages/stencils/disc.h"
#include "stages/strips.h"

namespace kelvo::KELVO_TARGET {
namespace {

template <int kWidth>
struct Disc {
  static constexpr disc::DiscBuilder kBuilder = disc::kDisc<kWidth>;
  static constexpr int kReach = DiscReach(kWidth), kMostRows = 6;
};

template <int... kWidthsBefore>
constexpr std::array<Strip, kMaxWidth + 1> MakeStrips(std::integer_sequence<int, kWidthsBefore...>) {
  return {Strip{}, MakeStrip<Disc<kWidthsBefore + 1>, kWidthsBefore + 1>()...};
}

constexpr auto kStrips = MakeStrips(std::make_integer_sequence<int, kMaxWidth>());

}  // namespace

void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
  RunStrips(kStrips.data()[stencil.disc], stencil, from, to, extent);
}

}  // namespace kelvo::KELVO_TARGET
