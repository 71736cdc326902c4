#include "stages/prefilter/prefilter.h"

#include <doctest/doctest.h>

#include "stages/copy.h"
#include "stages/pass_tables.h"
#include "stages/prefilter/filters.h"
#include "stages/routines.h"
#include "stages/stencils/disc.h"
#include "stages/stencils/isotropic.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

// Shapes with grain from a linear congruential generator.
void FillGoldenTile(Bench& bench) {
  uint32_t x = 1;
  for (int row = 0; row < 256; ++row)
    for (int column = 0; column < 256; ++column) {
      x = (x * 1103515245u + 12345u) & 0x7FFFFFFFu;
      const int grain = static_cast<int>((x >> 16) & 31) - 16;
      int level = 60 + (row >> 2) + ((grain * (column >> 5)) >> 3);
      if ((row - 128) * (row - 128) + (column - 128) * (column - 128) < 3600) level += 70;
      if ((column + 2 * row) % 64 < 20) level += 40;
      bench.Cell(0, row, column) = 128 * level;
    }
}

TEST_CASE("whole runs of the pre-filter leave the control planes") {
  const struct {
    int width, direction, noise, jpeg, margin, extra;
    uint32_t smoothed, staged, residual, classes;
    const char* kind = nullptr;  // of a generated tile, instead of the golden one
  } cases[] = {
      {1, 0, 0, 0, 7, 0, 0x06fe5e86, 0xc3976b50, 0x7d66e4ef, 0xeb89af0b},
      {4, 0, 2, 0, 11, 0, 0x7451f5a3, 0xc6778160, 0x2ca9ad32, 0xf5e47195},
      {6, 0, -1, 20, 15, 0, 0x6ab0ced5, 0x4edd584b, 0xed643155, 0xc769128d},
      {8, 0, 3, 10, 17, 1, 0xa1f3314b, 0x82d467a1, 0xa6ee873f, 0x078e3374},
      {20, 0, 2, 0, 36, 2, 0x98161bd1, 0xf91d2a60, 0x415409d5, 0xa12fc8ed},
      {13, 0, 2, 15, 27, 2, 0x23e23fcf, 0xbf56312d, 0x24f5b58b, 0xce4eff78},
      {20, 0, 3, 17, 36, 2, 0x6f4164d4, 0x27d73aee, 0x38adf8fa, 0xc37cc920},
      {2, 90, 3, 25, 6, 0, 0x3ec49496, 0xe6ad2bcf, 0xd64848af, 0x6e922bc9},
      {20, 45, 1, 12, 37, 2, 0xf3a1dec6, 0x6812633a, 0x927f2fb8, 0x15f0fb85},
      {1, 0, 0, 0, 7, 0, 0x785b06a1, 0x8600e02c, 0x65def156, 0x832c4b97, "wild"},
      {20, 0, 3, 30, 36, 2, 0xec5d0eaa, 0x3d6772b2, 0xf85446d2, 0x813e0670, "wild"},
      {5, 0, -1, 16, 13, 0, 0xdec0daf2, 0xac87d068, 0x4b2582ad, 0x9252be2c, "noise"},
      {3, 0, 3, 22, 10, 0, 0xabc1d97b, 0x3526ef79, 0xc66d1068, 0xe11c32ac, "blackwhite"},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.direction);
    Bench bench;
    if (c.kind != nullptr)
      bench.Fill(c.kind, {1});
    else
      FillGoldenTile(bench);
    bench.params.BlurSpec = static_cast<uint32_t>(c.width | c.direction << 8);
    bench.params.RemoveNoise = c.noise;
    bench.params.JPGCompression = c.jpeg;
    bench.params.TileTop = -3;
    bench.params.TileLeft = 130;
    bench.params.JPGHorizontalOffset = 3;
    bench.params.JPGVerticalOffset = 5;
    bench.params.NoiseFloor = (c.direction ? kMotionTable : kRoundTable).noise_floor[c.width];
    for (const Level level : RunnableLevels()) {
      CAPTURE(std::string(NameOf(level)));
      const Tile tile(bench.params, bench.heap(), RoutinesOf(level));
      ClearPrefilterPlanes(tile);
      Prefilter(tile, c.margin, c.extra);
      const int reach = c.margin + c.extra;
      CHECK(bench.Crc(kPreSmoothed, 61 - reach, 195 + reach) == c.smoothed);
      CHECK(bench.Crc(kStaged, 64 - reach, 192 + reach) == c.staged);
      CHECK(bench.Crc(kResidual, 64 - reach, 192 + reach) == c.residual);
      CHECK(bench.Crc(kClass, 64 - reach, 192 + reach) == c.classes);
    }
  }
}

TEST_CASE("the pre-smoother is chosen by width and noise, and by the nearest valid value of wild fields") {
  const auto chosen = [](uint32_t spec, int noise) {
    TileParams params{};
    params.BlurSpec = spec;
    params.RemoveNoise = noise;
    return &PreSmoother(params);
  };
  CHECK(chosen(1, 3) == &ObservedSmoother(16));
  CHECK(chosen(2, 3) == &ObservedSmoother(17));
  CHECK(chosen(3, 1) == &DiscBlur(2));
  CHECK(chosen(5, 2) == &DiscBlur(4));
  CHECK(chosen(6, 3) == &DiscBlur(6));
  CHECK(chosen(20, 3) == &DiscBlur(7));
  CHECK(chosen(20 | 45 << 8, 3) == &ObservedSmoother(17));
  CHECK(chosen(20 | 45 << 8, 0) == &Isotropic(1));
  CHECK(chosen(255, 1000) == &DiscBlur(7));
  CHECK(chosen(0, INT32_MIN) == chosen(1, -1));
}

// The enlargement runs the pre-filter on whatever stands in the block, so nothing there may lead it out of the heap.
TEST_CASE("wild fields and wild cells are safe and give the same at every level") {
  const int32_t wild[] = {INT32_MIN, -1, 0, 15, 16, 1000000007, INT32_MAX};
  for (const int32_t value : wild)
    for (const int32_t jpeg : {0, 16, INT32_MAX}) {
      Bench bench;
      bench.Fill("wild", {value & 1023});
      bench.params.BlurSpec = static_cast<uint32_t>(value);
      bench.params.RemoveNoise = bench.params.NoiseFloor = bench.params.TileTop = bench.params.TileLeft = value;
      bench.params.JPGHorizontalOffset = bench.params.JPGVerticalOffset = -value / 3;
      bench.params.JPGCompression = jpeg;
      const uint32_t above = bench.Crc(kStaged, 0, 64 - 39);
      uint32_t plain[3] = {};
      for (const Level level : RunnableLevels()) {
        CAPTURE(std::string(NameOf(level)));
        const Tile tile(bench.params, bench.heap(), RoutinesOf(level));
        ClearPrefilterPlanes(tile);
        Prefilter(tile, 37, 2);
        CHECK(bench.Crc(kStaged, 0, 64 - 39) == above);
        for (const int plane : {kStaged, kResidual, kClass}) {
          uint32_t& want = plain[plane - kStaged];
          if (level == Level::kPlain) want = bench.Crc(plane, 25, 231);
          CHECK(bench.Crc(plane, 25, 231) == want);
        }
      }
    }
}

}  // namespace
}  // namespace kelvo::test
