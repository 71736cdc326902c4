// The fit: that its steps are stable, what it leaves alone, and what it makes better.
#include "stages/fit.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "api/calls.h"
#include "motion/focus.h"
#include "round/focus_driver.h"
#include "stages/tone_tables.h"
#include "support/levels.h"
#include "support/library.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

constexpr uint32_t kFitAlone = KELVO_VARIANT_KEEP_FRACTION | KELVO_VARIANT_FIT | KELVO_VARIANT_FIT_ALONE;
constexpr uint32_t kFitAfterSearch =
    KELVO_VARIANT_UNDO_ROUND_MOVES | KELVO_VARIANT_SIGNED_MOTION | KELVO_VARIANT_KEEP_FRACTION | KELVO_VARIANT_FIT;

std::vector<FitFrame> AllFrames() {
  std::vector<FitFrame> frames;
  for (int width = 1; width <= kMaxWidth; ++width) frames.push_back(FitFrameOf(MemberOf(width)));
  for (int index = 0; index < motion::kMembers; ++index) {
    const motion::Name name = motion::NameOf(index);
    frames.push_back(FitFrameOf(MotionMemberOf(name.width, BucketOf(name.angle))));
  }
  return frames;
}

struct WeighedStep {
  CellStep step;
  double weight;
};

std::vector<WeighedStep> WeightsOf(const Stencil& stencil) {
  std::vector<WeighedStep> weights;
  double total = 0.0;
  size_t next = 0;
  for (const PartialSum sum : stencil.sums)
    for (int i = 0; i < sum.count; ++i) {
      weights.push_back({StepOver(stencil.cells[next++]), std::ldexp(1.0, -sum.shift)});
      total += weights.back().weight;
    }
  for (WeighedStep& weighed : weights) weighed.weight /= total;
  return weights;
}

// What the gradient makes of a wave of `down` and `right` radians a cell, before the step's size.
double Curvature(const std::vector<WeighedStep>& blur, double smooth_scale, double down, double right) {
  double h = 0.0, imaginary = 0.0;
  for (const auto& [step, weight] : blur) {
    h += weight * std::cos(step.row * down + step.column * right);
    imaginary += weight * std::sin(step.row * down + step.column * right);
  }
  CHECK(std::abs(imaginary) < 1e-9);  // the blur is its own transpose
  double smoothness = 0.0;
  for (const auto& [phase, share] : {std::pair{down, 1.0}, {right, 1.0}, {down + right, 0.5}, {down - right, 0.5}}) {
    const double d = 2.0 - 2.0 * std::cos(phase);
    smoothness += share * (d / 2.0 + d * d / 4.0);
  }
  return (9.0 - 8.0 * h) * (h * h + smoothness * smooth_scale);
}

TEST_CASE("the fit's steps are stable for every wave") {
  constexpr int kWaves = 10;
  for (const FitFrame& frame : AllFrames()) {
    const std::vector<WeighedStep> blur = WeightsOf(frame.blur);
    int reach = 0;
    for (const auto& [step, weight] : blur) reach = std::max({reach, std::abs(step.row), std::abs(step.column)});
    CHECK(reach <= frame.reach);
    for (int noise = -1; noise <= 3; noise += 4) {
      TileParams params{};
      params.RemoveNoise = noise;
      const FitPlan plan = PlanFit(params, frame);
      CHECK(plan.margin + 2 * frame.reach <= KELVO_CORE_START);
      double steepest = 0.0;
      for (int i = 0; i <= kWaves; ++i)
        for (int k = -kWaves; k < kWaves; ++k)
          steepest = std::max(steepest, Curvature(blur, std::ldexp(1.0, -plan.smooth_shift),
                                                  i * std::numbers::pi / kWaves, k * std::numbers::pi / kWaves));
      CAPTURE(blur.size());
      CHECK(steepest * plan.step / 8.0 < 4.0 / 3.0);
    }
  }
}

Bench Filled(const char* kind, const std::vector<int>& arguments, int width, int direction, uint32_t seed = 77) {
  Bench bench(seed);
  bench.Fill(kind, arguments);
  bench.params.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
  bench.params.Accuracy = -1;
  return bench;
}

TEST_CASE("a flat tile stays flat under the fit, at every brightness and fraction") {
  for (int turn = 0; turn < 2 * kMaxWidth; ++turn)
    for (const int display : {0, 128 + turn, 5000 + 37 * turn, 20011 + 128 * turn, 32640}) {
      Bench bench = Filled("flat", {display}, turn / 2 + 1, turn % 2 == 0 ? 0 : 1 + turn * 31 % 359);
      CAPTURE(bench.params.BlurSpec);
      CAPTURE(display);
      REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), kFitAlone) == 0);
      const std::vector<int32_t> core = bench.Core();
      CHECK(std::count(core.begin(), core.end(), RoundTripBetween(display)) == 128 * 128);
    }
}

double SquaredError(Bench& bench, const char* kind, const std::vector<int>& arguments) {
  double sum = 0.0;
  for (int row = 64; row < 192; ++row)
    for (int column = 64; column < 192; ++column) {
      const double error = bench.Cell(0, row, column) - TileCell(kind, arguments, row, column);
      sum += error * error;
    }
  return sum;
}

// Blurs the tile's core and what lies around it from pieces of the picture, as a host would.
void BlurWhole(Bench& bench, int width, int direction) {
  const std::vector<int32_t> sharp(bench.heap(), bench.heap() + 65536);
  std::vector<int32_t> blurred(65536);
  for (int top = -128; top <= 128; top += 128)
    for (int left = -128; left <= 128; left += 128) {
      Bench piece = Filled("flat", {0}, width, direction);
      const auto inside = [](int place) { return std::clamp(place, 0, 255); };
      for (int row = 0; row < 256; ++row)
        for (int column = 0; column < 256; ++column)
          piece.Cell(0, row, column) = sharp[static_cast<size_t>(256 * inside(row + top) + inside(column + left))];
      REQUIRE(kelvo_defocus_tile(&piece.params, piece.heap()) == 0);
      for (int row = std::max(64, -top); row < std::min(192, 256 - top); ++row)
        for (int column = std::max(64, -left); column < std::min(192, 256 - left); ++column)
          blurred[static_cast<size_t>(256 * (row + top) + column + left)] = piece.Cell(0, row, column);
    }
  std::copy(blurred.begin(), blurred.end(), bench.heap());
}

TEST_CASE("the fit takes away most of a blur, with and without a search before it") {
  for (const int width : {2, 6, 14})
    for (const int direction : {0, 20, 100}) {
      Bench blurred = Filled("soft", {5, 1}, width, direction);
      BlurWhole(blurred, width, direction);
      const double before = SquaredError(blurred, "soft", {5, 1});
      for (const uint32_t variant : {kFitAlone, kFitAfterSearch}) {
        Bench bench = blurred;
        bench.params.Accuracy = 0;
        REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), variant) == 0);
        CAPTURE(width);
        CAPTURE(direction);
        CAPTURE(variant);
        CHECK(SquaredError(bench, "soft", {5, 1}) < 0.5 * before);
      }
    }
}

// What the host makes up around the picture is not the picture's: mirrored tiles with mirrored directions and places
// must restore to mirrored results. Row 255 is left alone by the mirror of a tile, so the tiles have none of interest.
TEST_CASE("the picture's border turns with the tile") {
  for (const int width : {3, 12}) {
    Bench bench = Filled("soft", {9, 2}, width, 25), mirrored = Filled("flat", {0}, width, 155);
    for (int column = 0; column < 256; ++column) bench.Cell(0, 255, column) = 16000;
    for (int row = 0; row < 256; ++row)
      for (int column = 0; column < 256; ++column) mirrored.Cell(0, row, 255 - column) = bench.Cell(0, row, column);
    bench.params.ImageWidth = mirrored.params.ImageWidth = 300;
    bench.params.ImageHeight = mirrored.params.ImageHeight = 100;
    bench.params.TileLeft = 256;             // columns from 300 on are made up: 108 .. 255
    mirrored.params.TileLeft = -(128 - 44);  // here 0 .. 147
    REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), kFitAlone) == 0);
    REQUIRE(kelvo_focus_tile_with(&mirrored.params, mirrored.heap(), kFitAlone) == 0);
    int differing = 0;
    for (int row = 64; row < 192; ++row)
      for (int column = 64; column < 192; ++column)
        differing += bench.Cell(0, row, column) != mirrored.Cell(0, row, 255 - column) ? 1 : 0;
    CHECK(differing == 0);

    Bench whole = Filled("soft", {9, 2}, width, 25);
    REQUIRE(kelvo_focus_tile_with(&whole.params, whole.heap(), kFitAlone) == 0);
    CHECK(whole.Core() != bench.Core());
  }
}

TEST_CASE("every level fits bit by bit as the plain one, on fitting and on hostile tiles") {
  for (int turn = 0; turn < 2 * kMaxWidth; ++turn) {
    const char* kinds[] = {"soft", "wild", "blackwhite", "noise"};
    Bench filled = Filled(kinds[turn % 4], {turn, 1}, turn / 2 + 1, turn % 2 == 0 ? 0 : 1 + turn * 67 % 359);
    filled.params.RemoveNoise = turn % 5 - 1;
    filled.params.Accuracy = -2;
    CAPTURE(filled.params.BlurSpec);
    std::vector<int32_t> plain;
    for (const Level level : RunnableLevels()) {
      Bench bench = filled;
      REQUIRE(Call(Operation::kFocus, bench.params, bench.heap(), RoutinesOf(level), kFitAlone) == 0);
      if (plain.empty()) plain = bench.Core();
      CHECK(bench.Core() == plain);
    }
  }
}

TEST_CASE("a fit does not depend on what the heap held") {
  for (const int direction : {0, 40}) {
    std::vector<int32_t> cores[2];
    for (uint32_t i = 0; i < 2; ++i) {
      Bench bench = Filled("wild", {3}, 9, direction, 77 + 123457 * i);
      bench.params.JPGCompression = 25;
      REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), kFitAlone) == 0);
      cores[i] = bench.Core();
    }
    CHECK(cores[0] == cores[1]);
  }
}

}  // namespace
}  // namespace kelvo::test
