// kelvo_sweep: runs focus on a heap between guard pages, with wild values in the fields that nobody checks. A read or
// write outside the heap ends it; a result that is no display value is a failure.
//
//   kelvo_sweep slice [STEP]               round: every third pair of width and Accuracy; motion: every fifth member;
//                                          the rest takes turns; of these every STEP-th
//   kelvo_sweep round FIRST LAST [FILE...] every Accuracy and RemoveNoise at widths FIRST..LAST, on generated tiles and
//                                          on those in the files: 65536 display values, little-endian 32-bit, row by
//                                          row
//   kelvo_sweep motion FIRST LAST          every direction 1..359 at widths FIRST..LAST with the least effort, and every
//                                          member at every Accuracy; defocus likewise
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "motion/family.h"
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

// What takes turns: search alone, after a fit, a fit alone.
constexpr uint32_t kFit = KELVO_VARIANT_KEEP_FRACTION | KELVO_VARIANT_FIT;
uint32_t VariantOf(size_t turn, uint32_t search) {
  const uint32_t variants[] = {0, search, search | kFit, kFit | KELVO_VARIANT_FIT_ALONE};
  return variants[turn % 4];
}

struct Setting {
  int width, direction, accuracy, noise;
  uint32_t variant;
};

bool HoldsDisplayValues(const int32_t* tile) {
  for (int row = 64; row < 192; ++row)
    for (int column = 64; column < 192; ++column)
      if (tile[256 * row + column] < 0 || tile[256 * row + column] > 32767) return false;
  return true;
}

class Sweep {
 public:
  explicit Sweep(std::vector<TileCells> tiles) : tiles_(std::move(tiles)) {}

  size_t tiles() const { return tiles_.size(); }

  void Run(size_t tile, const Setting& s) {
    ++runs_;
    if (Passes(tiles_[tile % tiles_.size()], s)) return;
    ++failures_;
    std::printf("width %d, direction %d, accuracy %d, noise %d, variant %u: failed\n", s.width, s.direction, s.accuracy,
                s.noise, s.variant);
  }

  int Finish() const {
    std::printf("%d passed, %d failed\n", runs_ - failures_, failures_);
    return failures_ == 0 ? 0 : 1;
  }

 private:
  bool Passes(const TileCells& tile, const Setting& s) {
    TileParams params;
    std::memset(&params, 0x80, sizeof params);  // JPEG and position fields: far below zero
    params.StructureSize = sizeof params;
    params.BlurSpec = static_cast<uint32_t>(s.width) | static_cast<uint32_t>(s.direction) << 8;
    params.Accuracy = s.accuracy;
    params.RemoveNoise = s.noise;
    if (s.noise == 0) params.ImageWidth = params.ImageHeight = INT32_MAX;
    if (s.accuracy % 2 == 0) params.JPGCompression = params.TileTop = params.JPGHorizontalOffset = INT32_MAX;
    std::copy(tile.begin(), tile.end(), heap_.cells());
    if (kelvo_focus_tile_with(&params, heap_.cells(), s.variant) != KELVO_OK) return false;
    if (!HoldsDisplayValues(heap_.cells())) return false;
    std::copy(tile.begin(), tile.end(), heap_.cells());
    return kelvo_defocus_tile(&params, heap_.cells()) == KELVO_OK && HoldsDisplayValues(heap_.cells());
  }

  GuardedHeap heap_;
  std::vector<TileCells> tiles_;
  int runs_ = 0, failures_ = 0;
};

void RunSlice(Sweep& sweep, int step) {
  for (int turn = 0; turn < 5 * kelvo::kMaxWidth; turn += 3 * step)
    sweep.Run(static_cast<size_t>(turn),
              {turn / 5 + 1, 0, turn % 5 - 2, turn * 3 % 5 - 1, VariantOf(static_cast<size_t>(turn / 3), 1)});
  for (int index = 0; index < kelvo::motion::kMembers; index += 5 * step) {
    const kelvo::motion::Name name = kelvo::motion::NameOf(index);
    const int directions[] = {name.angle + 180, 90 - name.angle, 90 + name.angle, 180 - name.angle};
    sweep.Run(static_cast<size_t>(index / 5), {name.width, directions[index % 4], index % 2 - 2, index % 5 - 1,
                                               VariantOf(static_cast<size_t>(index), 2)});
  }
}

void RunRound(Sweep& sweep, int first, int last) {
  size_t turn = 0;
  for (int width = first; width <= last; ++width)
    for (int accuracy = -2; accuracy <= 2; ++accuracy)
      for (int noise = -1; noise <= 3; ++noise)
        for (size_t tile = 0; tile < sweep.tiles(); ++tile)
          sweep.Run(tile, {width, 0, accuracy, noise, VariantOf(turn++, 1)});
}

void RunMotion(Sweep& sweep, int first, int last) {
  for (int width = first; width <= last; ++width) {
    for (int direction = 1; direction < 360; ++direction)
      sweep.Run(static_cast<size_t>(direction),
                {width, direction, -2, direction % 5 - 1, VariantOf(static_cast<size_t>(direction / 2), 2)});
    for (int accuracy = -1; accuracy <= 2; ++accuracy)
      for (int angle = 0; angle <= 45; angle += width <= kelvo::motion::kSharingWidths ? 15 : 5)
        sweep.Run(static_cast<size_t>(accuracy + 1 + angle),
                  {width, 180 + angle, accuracy, accuracy == 2 ? 3 : accuracy,
                   VariantOf(static_cast<size_t>(angle + accuracy), 2)});
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode != "slice" && ((mode != "round" && mode != "motion") || argc < 4)) {
    std::fprintf(stderr, "usage: kelvo_sweep slice [STEP] | round FIRST LAST [FILE...] | motion FIRST LAST\n");
    return 2;
  }
  std::vector<TileCells> tiles = {Generated("noise", 1), Generated("wild", 2)};
  if (mode != "round") tiles.push_back(Generated("blackwhite", 3));
  for (int i = 4; i < argc; ++i) tiles.push_back(FromFile(argv[i]));
  Sweep sweep(std::move(tiles));
  const int first = mode == "slice" ? 1 : std::max(1, std::atoi(argv[2]));
  const int last = mode == "slice" ? 1 : std::min(kelvo::kMaxWidth, std::atoi(argv[3]));
  if (mode == "slice") RunSlice(sweep, argc > 2 ? std::max(1, std::atoi(argv[2])) : 1);
  if (mode == "round") RunRound(sweep, first, last);
  if (mode == "motion") RunMotion(sweep, first, last);
  return sweep.Finish();
}
