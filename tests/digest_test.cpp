// One checksum over every operation, width, direction and level, the same for every compiler, word size and system.
#include <doctest/doctest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "support/library.h"
#include "support/tiles.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // minutes there, and no other bits

namespace kelvo::test {
namespace {

// Folds what calls leave in the core and in the block into one number.
class Digest {
 public:
  Digest() {
    for (const auto& [kind, seed] : {std::pair{"soft", 3}, {"scene", 5}, {"levels", 7}, {"blackwhite", 9}}) {
      bench_.Fill(kind, {seed, 2});
      tiles_.emplace_back(bench_.heap(), bench_.heap() + 65536);
    }
  }

  // Calls take turns in tiles and in RemoveNoise.
  void Call(int ordinal, const TileParams& settings, uint32_t variant = 0) {
    const std::vector<int32_t>& tile = tiles_[static_cast<size_t>(++turn_ % 4)];
    std::copy(tile.begin(), tile.end(), bench_.heap());
    const uint32_t heap = bench_.params.WorkHeap;
    bench_.params = settings;
    bench_.params.WorkHeap = heap;
    bench_.params.StructureSize = sizeof(TileParams);
    bench_.params.RemoveNoise = turn_ % 5 - 1;
    Add(Bits(CallLibrary(ordinal, bench_.params, bench_.heap(), variant)));
    Add(bench_.CoreCrc());
    const TileParams& p = bench_.params;
    for (const int32_t field : {p.DetectedBlurWidth, p.JPGHorizontalOffset, p.JPGVerticalOffset, p.JPGCompression,
                                p.IterationCount, p.ExtraIterations, p.Iteration, p.Step, p.NoiseFloor})
      Add(Bits(field));
  }

  uint32_t value() const { return value_; }

 private:
  static uint32_t Bits(int32_t value) { return static_cast<uint32_t>(value); }
  void Add(uint32_t word) { value_ = Mix(value_ ^ word) + 1; }

  Bench bench_;
  std::vector<std::vector<int32_t>> tiles_;
  int turn_ = 0;
  uint32_t value_ = 0;
};

TileParams Blur(int width, int direction, int accuracy = 0) {
  TileParams settings{};
  settings.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
  settings.Accuracy = accuracy;
  settings.JPGCompression = width * 4;
  settings.ImageWidth = settings.ImageHeight = 500;
  return settings;
}

TEST_CASE("digest: blur, every width in every direction, detection, enlargement") {
  Digest digest;
  for (int width = 0; width <= 20; ++width)
    for (int direction = 0; direction < 360; ++direction) digest.Call(3, Blur(width, direction));
  for (int width = 0; width <= 20; ++width)
    for (const int ordinal : {5, 6, 7}) digest.Call(ordinal, Blur(width, 0));
  CHECK(digest.value() == 1634066193u);
}

#if !defined(KELVO_EMULATED)
TEST_CASE("digest: restoring, every width at every level, every direction") {
  Digest digest;
  for (int width = 0; width <= 20; ++width)
    for (int accuracy = -2; accuracy <= 2; ++accuracy)
      if (width < 8 || accuracy < 1 || width % 4 == accuracy) digest.Call(4, Blur(width, 0, accuracy));
  for (int direction = 1; direction < 360; ++direction)
    digest.Call(4, Blur(direction * 7 % 21, direction, direction % 40 == 0 ? 2 : direction % 9 == 0 ? 0 : -2));
  CHECK(digest.value() == 488381377u);
}

TEST_CASE("digest: restoring with every set of variants") {
  const std::pair<uint32_t, uint32_t> pinned[] = {{3, 3286962887u},  {4, 3849876373u},  {8, 1786230895u},
                                                  {15, 2594251910u}, {24, 3030994741u}, {28, 3682209755u}};
  for (const auto& pair : pinned) {
    const uint32_t variant = pair.first;
    Digest digest;
    for (int turn = 0; turn < 20; ++turn) {
      const int direction = turn % 3 == 0 ? 0 : 1 + turn * 61 % 359;
      digest.Call(4, Blur(1 + turn, direction, variant < 16 ? -2 + turn % 7 / 6 : turn % 5 - 2), variant);
    }
    CAPTURE(variant);
    CHECK(digest.value() == pair.second);
  }
}
#endif

}  // namespace
}  // namespace kelvo::test

#endif
