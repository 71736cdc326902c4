// The fit against the same search written out: every candidate in order, in 64 bits.
#include "analysis/width_fit.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "analysis/edge_direction.h"
#include "analysis/edge_model.h"
#include "stages/routines.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

int64_t Modelled(int width, int position, int64_t step) {
  return (EdgeModel(width)[position] * step) >> 16;
}

double PlainCost(const EdgeProfile& profile, int shift, int width, int64_t left, int64_t step) {
  const int reach = std::max(width + 2, 4), count = 2 * reach + 1;
  int64_t sum = 0, misfit = 0;
  const auto residual = [&](int j) { return profile[shift + j] - (left + Modelled(width, j, step)); };
  for (int j = -reach; j <= reach; ++j) sum += residual(j);
  for (int j = -reach; j <= reach; ++j) misfit += std::abs(residual(j) - sum / count);
  const int64_t mean_residual = misfit / count;
  return static_cast<double>(mean_residual) * 100.0 / static_cast<double>(std::abs(step));
}

WidthFit PlainFit(const EdgeProfile& profile) {
  double least = 1e20;
  int best_shift = 99;
  WidthFit best{};
  for (int shift = -4; shift <= 4; ++shift)
    for (int width = 0; width <= 26; ++width) {
      const int a = (width + 4) / 2, b = a / 2;
      const int64_t left = (int64_t{profile[shift - a - b]} + profile[shift - a]) / 2;
      const int64_t step = (int64_t{profile[shift + a + b]} + profile[shift + a]) / 2 - left;
      if (step == 0) continue;
      const double cost = PlainCost(profile, shift, width, left, step);
      if (cost >= least) continue;
      least = cost;
      best_shift = shift;
      best = {width, static_cast<int32_t>(step)};
    }
  if (std::abs(best_shift) > 3) return {kNoFit, 0};
  return best;
}

// Compares, at every level, on many profiles whose sample i is value(i, random); returns how many had a fit.
int CompareFits(const std::function<int(int, uint32_t)>& value, int runs) {
  std::vector<EdgeProfile> profiles(static_cast<size_t>(runs));
  std::vector<WidthFit> want, got(profiles.size());
  std::vector<int32_t> scratch(kFitScratch);
  uint32_t counter = 1;
  for (EdgeProfile& profile : profiles) {
    for (int i = -32; i <= 32; ++i) profile[i] = std::clamp(value(i, Mix(counter++)), 0, 16711680);
    want.push_back(PlainFit(profile));
  }
  const auto same = [](const WidthFit& a, const WidthFit& b) { return a.width == b.width && a.step == b.step; };
  for (const Level level : RunnableLevels()) {
    CAPTURE(NameOf(level));
    RoutinesOf(level).fit_widths(profiles.data(), runs, got.data(), scratch.data());
    CHECK(std::equal(want.begin(), want.end(), got.begin(), same));
  }
  return static_cast<int>(std::count_if(want.begin(), want.end(), [](const WidthFit& fit) { return fit.width >= 0; }));
}

TEST_CASE("the fit with bounds finds what the whole search finds, at every level") {
  int width = 0;
  const auto edge = [&](int low, int high, int noise) {
    return [=, &width](int i, uint32_t random) {
      if (i == -32) width = static_cast<int>(random % kModelWidths);
      const int model = i < 32 ? EdgeModel(width)[i] : 65536;
      const int grain = noise == 0 ? 0 : static_cast<int>(random % static_cast<uint32_t>(noise)) - noise / 2;
      return low + static_cast<int>(int64_t{high - low} * model / 65536) + grain;
    };
  };
  CHECK(CompareFits(edge(1000000, 9000000, 0), 100) > 90);
  CHECK(CompareFits(edge(16711680, 0, 500000), 300) > 200);
  CHECK(CompareFits(edge(5000, 5100, 3), 300) > 100);  // steps of a few units: costs of thousands of percent
  CompareFits(edge(5000, 5003, 0), 100);               // many equal costs
  CompareFits([](int, uint32_t random) { return static_cast<int>(random % 16711681); }, 300);
  CompareFits([](int, uint32_t random) { return random & 1 ? 16711680 : 0; }, 300);
  CompareFits([](int, uint32_t random) { return static_cast<int>(random % 3); }, 300);
  CompareFits([](int i, uint32_t random) { return (i + 32) * 260000 + static_cast<int>(random % 1000); }, 100);
  CHECK(CompareFits([](int, uint32_t) { return 700; }, 1) == 0);
}

TEST_CASE("directions of many rows are the same at every level") {
  const auto spread = [](uint32_t random, int row, int column) {
    const uint32_t values[] = {random % 16777216, random % 2 * 16777215, 4000000 + random % 500000,
                               static_cast<uint32_t>(row * column * 1000) % 16777216};
    return values[row / 16 % 4];
  };
  Bench bench;
  for (int row = 0; row < 256; ++row)
    for (int column = 0; column < 256; ++column)
      bench.Cell(1, row, column) =
          static_cast<int32_t>(spread(Mix(static_cast<uint32_t>(row * 256 + column)), row, column));
  int edges = 0, wrong = 0;
  for (const Level level : RunnableLevels())
    for (int row = 4; row < 248; ++row)
      for (const int count : {32, 13, 1}) {
        int32_t want[32], got[32];
        plain::EdgeDirections(&bench.Cell(1, row, 64), want, count);
        RoutinesOf(level).edge_directions(&bench.Cell(1, row, 64), got, count);
        wrong += !std::equal(want, want + count, got);
        edges += static_cast<int>(std::count_if(want, want + count, [](int direction) { return direction >= 0; }));
      }
  CHECK(wrong == 0);
  CHECK(edges > 10000);
}

TEST_CASE("edge models rise from 0 to 1 and are symmetric") {
  for (int width = 0; width < kModelWidths; ++width) {
    const int32_t* model = EdgeModel(width);
    CAPTURE(width);
    CHECK(model[-ModelReach(width) - 1] == 0);
    CHECK(model[ModelReach(width)] == 65536);
    for (int j = 0; j < 31; ++j) {
      CHECK(model[j] + model[-1 - j] == 65536);
      CHECK(model[j + 1] >= model[j]);
    }
  }
  CHECK(EdgeModel(5)[-1] == 25746);
  CHECK(EdgeModel(5)[2] == 62904);
}

}  // namespace
}  // namespace kelvo::test
