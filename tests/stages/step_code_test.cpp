#include "stages/step_code.h"

#include <doctest/doctest.h>

#include "motion/tap_row.h"
#include "stages/routines.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

int32_t Coded(int mantissa, int code) {
  return mantissa * 32 + (code & 31);
}

TEST_CASE("the step coder grows, shrinks and freezes codes as tabled") {
  const struct {
    const char* what;
    int iteration, half_step, previous, value, expected;
  } cases[] = {
      {"iteration 1 starts at code 0, whatever stood there", 1, 50, Coded(-7, 9), 12, Coded(12, 0)},
      {"values are clamped", 2, 50, Coded(0, 3), 5000, Coded(1023, 3)},
      {"values are clamped below", 2, 50, Coded(0, 3), -5000, Coded(-1023, 3)},
      {"nothing before: the code stays, even a frozen one", 2, 50, Coded(0, -12), 7, Coded(7, -12)},
      {"more than half: one up", 2, 50, Coded(10, 2), 6, Coded(6, 3)},
      {"half: stays", 2, 50, Coded(10, 2), 5, Coded(5, 2)},
      {"twice: one up", 2, 50, Coded(10, 2), 20, Coded(20, 3)},
      {"more than twice: two up", 2, 50, Coded(10, 2), 21, Coded(21, 4)},
      {"growth ends at 15", 2, 50, Coded(10, 14), 21, Coded(21, 15)},
      {"growth at 15 stays", 2, 50, Coded(10, 15), 21, Coded(21, 15)},
      {"negative, odd: half rounds down, so more is needed", 2, 50, Coded(-5, 2), -3, Coded(-3, 2)},
      {"negative, odd: beyond it", 2, 50, Coded(-5, 2), -4, Coded(-4, 3)},
      {"negative, twice exceeded", 2, 50, Coded(-5, 2), -11, Coded(-11, 4)},
      {"reversal: two down", 2, 50, Coded(-5, 2), 3, Coded(3, 0)},
      {"reversal, too large: down until it fits", 2, 10, Coded(-5, 2), 20, Coded(20, -2)},
      {"reversal, never fits: frozen", 2, 0, Coded(-5, 2), 1000, Coded(1000, -8)},
      {"reversal from frozen stays at -8", 2, 50, Coded(-5, -16), 3, Coded(3, -8)},
      {"reversal to negative, too large", 2, 10, Coded(5, 2), -20, Coded(-20, -2)},
      {"no move after a small one: stays", 2, 50, Coded(2, 4), 0, Coded(0, 4)},
      {"no move after a larger one: one down", 2, 50, Coded(-3, 4), 0, Coded(0, 3)},
      {"no move never goes below -8", 2, 50, Coded(3, -8), 0, Coded(0, -8)},
  };
  for (const auto& c : cases) {
    CAPTURE(c.what);
    CHECK(CodeStep(c.iteration, c.half_step, c.previous, c.value) == c.expected);
  }
}

TEST_CASE("decoded steps are single-precision products, each truncated") {
  TileParams params{};
  params.GradientScale = 1.0f;
  CHECK(DecodeStep(params, Coded(100, -6)) == 13);  // double precision gives 12
  CHECK(DecodeStep(params, Coded(-100, -6)) == -13);
  CHECK(DecodeStep(params, Coded(1023, -8)) == 0);
  params.GradientScale = 11520.0f;
  CHECK(DecodeStep(params, Coded(1023, 15)) == 2133077760);
  params.ScaleShift = 4;
  CHECK(DecodeStep(params, Coded(1023, 15)) == INT32_MIN);  // does not fit: a fixed answer, not undefined behaviour
}

TEST_CASE("passes over a coded plane change the halves they are told to") {
  Bench bench;
  const Tile tile(bench.params, bench.heap(), RoutinesOf(Level::kPlain));
  const auto plane_of = [&](int32_t cell) -> int32_t& {
    std::fill_n(tile.Cells(kVertical), kPlaneCells, cell);
    return tile.At(kVertical, 255, 255);
  };
  const int32_t halves = WithLowHalf(Coded(-300, 7) << 16, Coded(200, -5));
  SUBCASE("reset") {
    int32_t& cell = plane_of(halves);
    ResetCodes(tile, kVertical, CodeReset::kClear);
    CHECK(cell == WithLowHalf(Coded(200, 0) << 16, Coded(200, 0)));
    plane_of(halves);
    ResetCodes(tile, kVertical, CodeReset::kHalve);
    CHECK(cell == WithLowHalf(Coded(200, -3) << 16, Coded(200, -3)));
  }
  SUBCASE("merge takes the saved mantissa and keeps the code") {
    int32_t& cell = plane_of(halves);
    MergeHalves(tile, kVertical);
    CHECK(cell == WithLowHalf(Coded(-300, 7) << 16, Coded(-300, -5)));
  }
  SUBCASE("damping") {
    const int damped[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 11, 12, 12};
    for (int code = -16; code < 16; ++code) {
      int32_t& cell = plane_of(Coded(77, code));
      DampCodes(tile, kVertical);
      CHECK(LowHalf(cell) == Coded(77, code < 0 ? code : damped[code]));
    }
  }
}

// What a routine makes of two rows of `count` cells, read from and written to.
template <class Run>
std::vector<int32_t> Rows(int count, Run run) {
  std::vector<int32_t> rows(2 * static_cast<size_t>(count) + 2);
  for (size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)));
  run(rows.data(), rows.data() + count + 1, count);
  return rows;
}

TEST_CASE("rows of coded steps: every level gives what the plain one gives, and nothing beside") {
  const auto runs = [](const Routines& routines, const StepScale& scale, int count) {
    const auto decode = [&](int32_t* a, int32_t* b, int n) { routines.decode_row(scale, a, b, n); };
    const auto add = [&](int32_t* a, int32_t* b, int n) { routines.add_row(scale.shift - 3, a, b, n); };
    const OperatorTap tap{0, 0, 0, -1, static_cast<TapBase>(scale.shift % 3), 65536 - 7777 * scale.shift};
    const auto add_tap = [&](int32_t* a, int32_t* b, int n) { routines.add_tap_row(tap, a, b, n); };
    const auto clear = [&](int32_t* a, int32_t*, int n) { routines.reset_row(CodeReset::kClear, a, n); };
    const auto halve = [&](int32_t* a, int32_t*, int n) { routines.reset_row(CodeReset::kHalve, a, n); };
    const auto merge = [&](int32_t* a, int32_t*, int n) { routines.merge_row(a, n); };
    const auto damp = [&](int32_t* a, int32_t*, int n) { routines.damp_row(a, n); };
    return std::vector{Rows(count, decode), Rows(count, add),   Rows(count, add_tap), Rows(count, clear),
                       Rows(count, halve),  Rows(count, merge), Rows(count, damp)};
  };
  TileParams params{};
  for (const float gradient : {0.31f, 96.0f, 11520.0f, 3e8f})
    for (const int count : {1, 7, 8, 31, 160}) {
      params.GradientScale = gradient;
      params.ScaleShift = count % 9;
      const StepScale scale = StepScaleOf(params);
      const auto want = runs(RoutinesOf(Level::kPlain), scale, count);
      const std::vector<int32_t> codes = Rows(count, [](int32_t*, int32_t*, int) {});
      for (size_t i = 0; i < static_cast<size_t>(count); ++i)
        REQUIRE(want[0][static_cast<size_t>(count) + 1 + i] == DecodeStep(params, LowHalf(codes[i])));
      for (const Level level : RunnableLevels()) {
        CAPTURE(std::string(NameOf(level)));
        CHECK(runs(RoutinesOf(level), scale, count) == want);
      }
    }
}

}  // namespace
}  // namespace kelvo::test
