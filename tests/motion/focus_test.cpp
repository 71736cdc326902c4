// Whole runs on motion blur: what must hold for every member, whatever the tile and the heap.
#include <doctest/doctest.h>

#include <algorithm>

#include "motion/family.h"
#include "stages/tone_tables.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(KELVO_EMULATED)
constexpr int kMemberStep = 7;  // five times slower, emulated forty: every seventh member
#else
constexpr int kMemberStep = 1;
#endif

Bench Prepared(uint32_t heap_seed, const std::string& kind, const std::vector<int>& arguments, int width, int degrees) {
  Bench bench(heap_seed);
  bench.Fill(kind, arguments);
  bench.params.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(degrees) << 8;
  return bench;
}

// One direction per member, in the four ways that a tile is turned; 0 degrees is asked for as 180.
int DirectionOf(const motion::Name& name, int turn) {
  const int directions[] = {180 + name.angle, 90 - name.angle, 270 + name.angle, 180 - name.angle};
  return directions[turn % 4];
}

// Also of the outermost floors, which read the farthest.
TEST_CASE("a result does not depend on what the heap held: motion") {
  const char* const kinds[] = {"soft", "wild", "blackwhite"};
  for (int index = 0; index < motion::kMembers; index += kMemberStep) {
    const motion::Name name = motion::NameOf(index);
    const Region floors(MotionMemberOf(name.width, BucketOf(name.angle)).line_min_margin);
    CAPTURE(name.width);
    CAPTURE(name.angle);
    uint32_t crcs[2][2];
    for (uint32_t i = 0; i < 2; ++i) {
      Bench bench = Prepared(77 + 123457 * i, kinds[index % 3], {name.width, 1}, name.width, DirectionOf(name, index));
      bench.params.Accuracy = index % 5 == 0 ? -1 : -2;
      bench.params.RemoveNoise = index % 5 - 1;
      bench.params.JPGCompression = 17;
      REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), index % 4 == 0 ? KELVO_VARIANT_SIGNED_MOTION : 0) ==
              0);
      crcs[i][0] = bench.CoreCrc();
      crcs[i][1] = bench.Crc(kFloor, floors.first, floors.end);
    }
    CHECK(crcs[0][0] == crcs[1][0]);
    CHECK(crcs[0][1] == crcs[1][1]);
  }
}

TEST_CASE("a flat tile stays flat, and only its tone is rounded: motion") {
  for (int index = 0; index < motion::kMembers; index += kMemberStep) {
    const motion::Name name = motion::NameOf(index);
    const int display = 128 * (index * 37 % 256);
    CAPTURE(name.width);
    CAPTURE(name.angle);
    CAPTURE(display);
    Bench bench = Prepared(77, "flat", {display}, name.width, DirectionOf(name, index + 1));
    REQUIRE(kelvo_defocus_tile(&bench.params, bench.heap()) == 0);
    std::vector<int32_t> core = bench.Core();
    CHECK(std::count(core.begin(), core.end(), core.front()) == 128 * 128);
    CHECK(std::abs(core.front() - RoundTrip(display)) <= 64);

    bench = Prepared(77, "flat", {display}, name.width, DirectionOf(name, index));
    bench.params.Accuracy = index % 3 - 2;
    REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), KELVO_VARIANT_SIGNED_MOTION) == 0);
    core = bench.Core();
    CHECK(std::count(core.begin(), core.end(), core.front()) == 128 * 128);
    CHECK(core.front() == RoundTrip(display));
  }
}

TEST_CASE("defocus along a line changes the core alone, and a line turned by half is the same line") {
  for (const int width : {1, 7, 20})
    for (const int degrees : {10, 60, 100, 170}) {
      CAPTURE(width);
      CAPTURE(degrees);
      Bench bench = Prepared(5, "noise", {5}, width, degrees), turned = Prepared(6, "noise", {5}, width, degrees + 180);
      Bench before = bench;
      REQUIRE(kelvo_defocus_tile(&bench.params, bench.heap()) == 0);
      REQUIRE(kelvo_defocus_tile(&turned.params, turned.heap()) == 0);
      CHECK(bench.Crc(0, 0, 256) == turned.Crc(0, 0, 256));
      CHECK(bench.CoreCrc() != before.CoreCrc());
      for (Bench* each : {&bench, &before})
        for (int row = 64; row < 192; ++row) std::fill_n(&each->Cell(0, row, 64), 128, 0);
      CHECK(bench.Crc(0, 0, 256) == before.Crc(0, 0, 256));
    }
}

}  // namespace
}  // namespace kelvo::test
