#include "stages/schedule.h"

#include <doctest/doctest.h>

#include "stages/routines.h"
#include "stages/weights.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

TEST_CASE("the schedule follows width, direction and accuracy") {
  const struct {
    uint32_t spec;
    int accuracy, iterations, extra, shortcut;
    uint32_t flags;
  } cases[] = {
      {1, 0, 0, 0, 3, 4},
      {1, 2, 4, 0, 0, 4},
      {3, 2, 4, 0, 0, 12},
      {5, 1, 5, 0, 0, 4},
      {6, -1, 2, 0, 1, 12},
      {6, -2, 1, 0, 2, 12},
      {7, -2, 1, 0, 0, 12},
      {10, -2, 2, 0, 0, 12},
      {10, 0, 2, 2, 0, 12},
      {4 | 30 << 8, -2, 1, 0, 0, 0},
      {20 | 45 << 8, 1, 3, 2, 0, 0},
      {5, 99, 5, 0, 0, 12},
      {5, -99, 0, 0, 3, 4},
  };
  for (const auto& c : cases) {
    CAPTURE(c.spec);
    CAPTURE(c.accuracy);
    TileParams params{};
    params.BlurSpec = c.spec;
    params.Accuracy = c.accuracy;
    SetUpSchedule(params);
    CHECK(params.IterationCount == c.iterations);
    CHECK(params.ExtraIterations == c.extra);
    CHECK(params.ShortcutMode == c.shortcut);
    CHECK(params.ModelFlags == c.flags);
    CHECK(params.CurveIndex == 2);
  }
}

TEST_CASE("JPEG level is a tenth of the compression, at most 6") {
  const int cases[][2] = {{0, 0}, {9, 0}, {10, 1}, {69, 6}, {80, 6}, {-25, -2}};
  for (const auto& [compression, level] : cases) {
    TileParams params{};
    params.JPGCompression = compression;
    params.BlurSpec = 1;
    SetUpSchedule(params);
    CHECK(params.JPGLevel == level);
  }
}

TEST_CASE("steps fall with the iteration by integer divisions") {
  TileParams params{};
  params.BlurSpec = 1;
  SetUpPass(params, 1, 0);
  const int steps[] = {100, 50, 33, 25, 20};
  for (int i = 1; i <= 5; ++i) {
    SetUpIteration(params, i);
    CHECK(params.Step == steps[i - 1]);
    CHECK(params.HalfStep == steps[i - 1] / 2);
  }
}

TEST_CASE("width 4 alone gains strength with accuracy") {
  const auto strength = [](uint32_t spec, int accuracy) {
    TileParams params{};
    params.BlurSpec = spec;
    params.Accuracy = accuracy;
    SetUpPass(params, 1, 1);
    return params.Strength;
  };
  CHECK(strength(4, 2) == 2.0f * strength(4, 0));
  CHECK(strength(4, 1) == 1.4f * strength(4, 0));
  CHECK(strength(5, 2) == strength(5, 0));
  CHECK(strength(4 | 30 << 8, 2) == strength(4 | 30 << 8, 0));
}

TEST_CASE("weight tables: ramp, scaled curve, curve, and what continues them") {
  Bench bench;
  bench.params.CurveIndex = 2;
  bench.params.Strength = 0.25f;
  const Tile tile(bench.params, bench.heap(), RoutinesOf(Level::kPlain));
  const int32_t before = tile.Cells(kBlurred)[0];
  BuildWeightTables(tile);
  const int32_t* cells = tile.Cells(kBlurred);
  const auto cell = [&](int i) { return static_cast<uint32_t>(cells[i]); };
  CHECK(cells[0] == before);
  CHECK(cell(1) == 4000000000u);
  CHECK(cell(511) == 1183800359u);  // floor(floor(floor(D[0] / 4) x 1.05) x 1.05)
  CHECK(cell(512) == 1073741823u);
  CHECK(cell(513) == 3150745263u / 4);
  CHECK(cell(1023) == 109543639u / 4);
  CHECK(cell(6143) == 109543639u / 4);
  CHECK(cell(6144) == 4294967295u);
  CHECK(cell(6400) == 4294967295u);
  CHECK(cell(6401) == 3150745263u);
  CHECK(cell(8191) == 109543639u);
}

TEST_CASE("refinement counts by width, accuracy and iteration") {
  const struct {
    int width, accuracy, iteration, shortcut, count;
  } cases[] = {
      {1, 2, 1, 0, 2},  {1, 2, 2, 0, 1}, {1, 2, 4, 0, 0},  {3, 1, 1, 0, 1},  {3, 0, 1, 0, 0},  {4, 0, 1, 0, 1},
      {6, 2, 1, 0, 3},  {6, 2, 1, 2, 0}, {6, -1, 1, 1, 0}, {7, -1, 1, 0, 1}, {7, -2, 1, 0, 0}, {7, 2, 2, 0, 3},
      {8, -1, 1, 0, 1}, {9, 2, 1, 0, 8}, {9, 1, 1, 0, 4},  {9, 0, 1, 0, 2},  {11, 1, 1, 0, 6}, {20, -1, 1, 0, 2},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.accuracy);
    TileParams params{};
    params.BlurSpec = static_cast<uint32_t>(c.width);
    params.Accuracy = c.accuracy;
    params.Iteration = c.iteration;
    params.ShortcutMode = c.shortcut;
    CHECK(std::max(0, RefineCount(params)) == c.count);
  }
}

}  // namespace
}  // namespace kelvo::test
