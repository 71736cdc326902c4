#include "stages/disc_strips.h"

#include "stages/stencils/disc.h"

namespace kelvo::KELVO_TARGET {
namespace {

template <int kWidth>
struct Disc {
  static constexpr disc::DiscBuilder kBuilder = disc::kDisc<kWidth>;
  static constexpr int kReach = DiscReach(kWidth), kMostRows = 6;
  // Full cells are dealt to partial sums in turns: those of one sum lie as many columns apart as there are turns. Pairs of
  // them pay where registers hold the sums of too few rows for loads to be shared, but not for small discs.
  static constexpr int kSums = static_cast<int>(kBuilder.View().sums.size());
  static constexpr int kApart = kWidth > 8 && RowsFor(kSums, kMostRows) < 3 ? disc::Hands(disc::kDiscs[kWidth]) : 0;
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
