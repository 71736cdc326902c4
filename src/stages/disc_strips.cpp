#include "stages/disc_strips.h"

#include "stages/stencils/disc.h"

namespace kelvo::KELVO_TARGET {
namespace {

template <int kWidth>
struct Disc {
  static constexpr disc::DiscBuilder kBuilder = disc::kDisc<kWidth>;
  static constexpr int kReach = DiscReach(kWidth), kMostRows = 6;
};

template <int... kWidthsBefore>
constexpr std::array<Strip, kMaxWidth> MakeStrips(std::integer_sequence<int, kWidthsBefore...>) {
  return {MakeStrip<Disc<kWidthsBefore + 1>, kWidthsBefore + 1>()...};
}

constexpr auto kStrips = MakeStrips(std::make_integer_sequence<int, kMaxWidth>());

}  // namespace

Strip DiscStrip(int width) {
  return kStrips.data()[width - 1];
}

}  // namespace kelvo::KELVO_TARGET
