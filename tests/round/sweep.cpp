// kelvo_sweep: runs focus at every round width, Accuracy and RemoveNoise on a heap between guard pages, with wild
// values in the fields that nobody checks. A read or write outside the heap ends it; a result that is no display
// value is a failure.
//
//   kelvo_sweep slice                     every other pair of width and Accuracy; the rest takes turns
//   kelvo_sweep full FIRST LAST [FILE...] every combination at widths FIRST..LAST, on generated tiles and on those in
//                                         the files: 65536 display values, little-endian 32-bit, row by row
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "round/family.h"
#include "support/guarded_heap.h"
#include "support/tiles.h"

namespace {

using kelvo::test::GuardedHeap;
using TileCells = std::vector<int32_t>;

TileCells Generated(const std::string& kind, int argument) {
  TileCells cells(65536);
  for (int i = 0; i < 65536; ++i)
    cells[static_cast<size_t>(i)] = kelvo::test::TileCell(kind, {argument, 2}, i / 256, i % 256);
  return cells;
}

TileCells FromFile(const char* path) {
  TileCells cells(65536);
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(cells.data()), 4 * 65536)) {
    std::fprintf(stderr, "%s: expected 262144 bytes of display values\n", path);
    std::exit(2);
  }
  return cells;
}

struct Setting {
  int width, accuracy, noise;
  uint32_t variant;
};

bool Run(GuardedHeap& heap, const TileCells& tile, const Setting& setting) {
  std::copy(tile.begin(), tile.end(), heap.cells());
  TileParams params;
  std::memset(&params, 0x80, sizeof params);  // JPEG and position fields: far below zero
  params.StructureSize = sizeof params;
  params.BlurSpec = static_cast<uint32_t>(setting.width);
  params.Accuracy = setting.accuracy;
  params.RemoveNoise = setting.noise;
  if (setting.accuracy % 2 == 0) params.JPGCompression = params.TileTop = params.JPGHorizontalOffset = INT32_MAX;
  if (kelvo_focus_tile_with(&params, heap.cells(), setting.variant) != KELVO_OK) return false;
  for (int row = 64; row < 192; ++row)
    for (int column = 64; column < 192; ++column) {
      const int32_t cell = heap.cells()[256 * row + column];
      if (cell < 0 || cell > 32767) return false;
    }
  return true;
}

int Sweep(const std::vector<TileCells>& tiles, bool full, int first, int last) {
  GuardedHeap heap;
  int runs = 0, failures = 0, turn = 0;
  const auto run = [&](const TileCells& tile, const Setting& setting) {
    ++runs;
    if (Run(heap, tile, setting)) return;
    ++failures;
    std::printf("width %d, accuracy %d, noise %d, variant %u: failed\n", setting.width, setting.accuracy, setting.noise,
                setting.variant);
  };
  for (int width = first; width <= last; ++width)
    for (int accuracy = -2; accuracy <= 2; ++accuracy, ++turn) {
      if (!full) {
        if (turn % 2 == 0)
          run(tiles[static_cast<size_t>(turn) % tiles.size()],
              {width, accuracy, turn * 3 % 5 - 1, turn / 2 % 2 == 0 ? 1u : 0u});
        continue;
      }
      for (int noise = -1; noise <= 3; ++noise)
        for (const TileCells& tile : tiles) run(tile, {width, accuracy, noise, static_cast<uint32_t>(runs) & 1u});
    }
  std::printf("%d passed, %d failed\n", runs - failures, failures);
  return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode != "slice" && (mode != "full" || argc < 4)) {
    std::fprintf(stderr, "usage: kelvo_sweep slice | full FIRST LAST [FILE...]\n");
    return 2;
  }
  std::vector<TileCells> tiles = {Generated("noise", 1), Generated("wild", 2)};
  if (mode == "slice") {
    tiles.push_back(Generated("blackwhite", 3));
    return Sweep(tiles, false, 1, kelvo::kMaxWidth);
  }
  for (int i = 4; i < argc; ++i) tiles.push_back(FromFile(argv[i]));
  return Sweep(tiles, true, std::max(1, std::atoi(argv[2])), std::min(kelvo::kMaxWidth, std::atoi(argv[3])));
}
