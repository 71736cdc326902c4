// Enlargement: the rules against their literal form, and what must hold for every tile.
#include "enlarge/enlarge.h"

#include <doctest/doctest.h>

#include <cstring>

#include "enlarge/literal.h"
#include "stages/routines.h"
#include "support/guarded_heap.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

using Cells = std::vector<int32_t>;

template <class Cell>
Cells TileOf(Cell cell) {
  Cells tile(65536);
  for (int i = 0; i < 65536; ++i) tile[static_cast<size_t>(i)] = cell(i / 256, i % 256);
  return tile;
}

Cells Generated(const char* kind, const std::vector<int>& arguments) {
  return TileOf([&](int row, int column) { return TileCell(kind, arguments, row, column); });
}

// Every cell is one of a few values: ties and thresholds everywhere.
Cells FewValues(uint32_t seed, const Cells& values) {
  return TileOf([&](int row, int column) {
    return values[Mix(seed * 65536 + static_cast<uint32_t>(256 * row + column)) % values.size()];
  });
}

// Plane 0 after the call, in a heap full of rubbish.
Cells Enlarged(const Cells& tile, uint32_t heap_seed = 77) {
  Bench bench(heap_seed);
  std::copy(tile.begin(), tile.end(), bench.heap());
  REQUIRE(kelvo_increase_resolution(&bench.params, bench.heap()) == 0);
  return Cells(bench.heap(), bench.heap() + 65536);
}

Cells CoreOf(const Cells& plane) {
  Cells core;
  for (int row = 64; row < 192; ++row)
    core.insert(core.end(), plane.begin() + 256 * row + 64, plane.begin() + 256 * row + 192);
  return core;
}

Cells Doubled(const Cells& tile) {
  return TileOf([&](int row, int column) { return tile[static_cast<size_t>(256 * (64 + row / 2) + 64 + column / 2)]; });
}

struct NamedTile {
  std::string name;
  Cells cells;
};

std::vector<NamedTile> Tiles() {
  std::vector<NamedTile> tiles = {{"noise", Generated("noise", {1})},
                                  {"wild", Generated("wild", {2})},
                                  {"scene", Generated("scene", {3})},
                                  {"soft", Generated("soft", {4, 2})},
                                  {"edge", Generated("edge", {3, 5, 0, 32640})}};
  const std::vector<Cells> values = {{0, 1},
                                     {0, 1, 2},
                                     {-1, 0, 1},
                                     {0, 128, 32640},
                                     {100, 101, 102, 103, 104, 105, 106, 107},
                                     {0, 1, 32766, 32767},
                                     {0, 32767},
                                     {32766, 32767},
                                     {32767, 32768},
                                     {INT32_MIN, INT32_MAX},
                                     {INT32_MIN, INT32_MIN + 1, -1, 0, INT32_MAX - 1, INT32_MAX}};
  for (uint32_t i = 0; i < values.size(); ++i)
    tiles.push_back({"few values " + std::to_string(i), FewValues(i, values[i])});
  return tiles;
}

TEST_CASE("the rules give what their literal form gives, and each is met in every phase") {
  Taken taken;
  for (const NamedTile& tile : Tiles()) {
    CAPTURE(tile.name);
    CHECK((Enlarged(tile.cells) == EnlargeLiterally(tile.cells, &taken)));
  }
  for (const char* rule :
       {"peak softened", "pit softened",  "peak north",   "pit north",   "peak west",    "pit west",  "bright stopped",
        "bright weak",   "bright beside", "bright below", "bright half", "dark stopped", "dark weak", "dark beside",
        "dark below",    "dark half",     "bright notch", "dark notch",  "bright line",  "dark line"})
    for (int phase = 0; phase < 4; ++phase) {
      CAPTURE(rule);
      CAPTURE(phase);
      CHECK(taken[rule + std::string("/") + std::to_string(phase)] > 0);
    }
}

TEST_CASE("every level gives what the literal form gives, also where one value alone is out of the common range") {
  std::vector<NamedTile> tiles = Tiles();
  for (const int value : {-1, 32768, INT32_MIN})
    for (const int place : {93 * 256 + 93, 162 * 256 + 162, 128 * 256 + 100}) {
      tiles.push_back({"noise and " + std::to_string(value), Generated("noise", {5})});
      tiles.back().cells[static_cast<size_t>(place)] = value;
    }
  for (const NamedTile& tile : tiles)
    for (const Level level : RunnableLevels()) {
      CAPTURE(tile.name);
      CAPTURE(NameOf(level));
      Bench bench(6);
      std::copy(tile.cells.begin(), tile.cells.end(), bench.heap());
      EnlargeCentre(Tile(bench.params, bench.heap(), RoutinesOf(level)));
      CHECK((Cells(bench.heap(), bench.heap() + 65536) == EnlargeLiterally(tile.cells, nullptr)));
    }
}

TEST_CASE("flat ground, straight edges and lone pixels are doubled and no more") {
  const std::vector<NamedTile> tiles = {
      {"flat", Generated("flat", {5001})},
      {"horizontal", Generated("edge", {1, 0, 30000, 1000})},
      {"vertical", Generated("edge", {0, 1, 1000, 30000})},
      {"lone bright", TileOf([](int row, int column) { return row == 120 && column == 130 ? 30000 : 1000; })},
      {"lone dark", TileOf([](int row, int column) { return row == 120 && column == 130 ? 1000 : 30000; })}};
  for (const NamedTile& tile : tiles) {
    CAPTURE(tile.name);
    CHECK((Enlarged(tile.cells) == Doubled(tile.cells)));
  }
}

TEST_CASE("only rows and columns 62..193 are reshaped, within the range of the tile") {
  const Cells tile = Generated("noise", {9});
  const Cells enlarged = Enlarged(tile), doubled = Doubled(tile);
  int changed = 0, outside = 0, out_of_range = 0;
  for (int i = 0; i < 65536; ++i) {
    const auto within = [](int position) { return position >= 62 && position < 194; };
    const auto at = static_cast<size_t>(i);
    const bool differs = enlarged[at] != doubled[at];
    changed += differs;
    outside += differs && !(within(i / 256) && within(i % 256));
    out_of_range += enlarged[at] < 0 || enlarged[at] > 32767;
  }
  CHECK(changed > 132 * 132 / 4);
  CHECK(outside == 0);
  CHECK(out_of_range == 0);
}

TEST_CASE("the core depends on rows and columns 93..162 alone, and the pre-filter adds nothing") {
  const Cells tile = Generated("noise", {10});
  Bench bench(5);  // rubbish all around
  for (int row = 93; row < 163; ++row)
    for (int column = 93; column < 163; ++column)
      bench.Cell(0, row, column) = tile[static_cast<size_t>(256 * row + column)];
  EnlargeCentre(Tile(bench.params, bench.heap(), BestRoutines()));
  CHECK((bench.Core() == CoreOf(Enlarged(tile))));
}

// Nobody checks the fields that the pre-filter reads.
TEST_CASE("no field of the block matters, none changes, and no plane is touched without need") {
  const Cells tile = Generated("scene", {11});
  const Cells expected = Enlarged(tile);
  for (const int fill : {0x00, 0x7F, 0x80, 0xFF}) {
    CAPTURE(fill);
    GuardedHeap heap;
    for (int i = 0; i < KELVO_HEAP_WORDS; ++i) heap.cells()[i] = i;
    std::copy(tile.begin(), tile.end(), heap.cells());
    TileParams params;
    std::memset(&params, fill, sizeof params);
    params.StructureSize = sizeof params;
    TileParams before = params;
    before.Message[0] = 0;
    CHECK(kelvo_increase_resolution(&params, heap.cells()) == 0);
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): every byte counts
    CHECK(std::memcmp(&before, &params, sizeof params) == 0);
    CHECK(std::equal(expected.begin(), expected.end(), heap.cells()));
    int touched = 0;
    for (const int plane : {3, 4, 8, 10, 11, 12, 13, 14, 15})
      for (int i = 65536 * plane; i < 65536 * (plane + 1); ++i) touched += heap.cells()[i] != i;
    CHECK(touched == 0);
  }
}

}  // namespace
}  // namespace kelvo::test
