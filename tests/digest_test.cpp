// One checksum over every operation, width, direction and level, the same for every compiler, word size and system.
#include <doctest/doctest.h>

#include "support/library.h"
#include "support/tiles.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // minutes there, and no other bits

namespace kelvo::test {
namespace {

// Folds what calls leave in the core and in the block into one number.
class Digest {
 public:
  void Call(int ordinal, int turn, const TileParams& settings) {
    const char* const kinds[] = {"soft", "scene", "levels", "blackwhite"};
    bench_.Fill(kinds[turn % 4], {turn % 50, 1});
    const uint32_t heap = bench_.params.WorkHeap;
    bench_.params = settings;
    bench_.params.WorkHeap = heap;
    bench_.params.StructureSize = sizeof(TileParams);
    Add(Bits(CallLibrary(ordinal, bench_.params, bench_.heap(), 0)));
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
  uint32_t value_ = 0;
};

TileParams Blur(int width, int direction, int accuracy, int noise) {
  TileParams settings{};
  settings.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
  settings.Accuracy = accuracy;
  settings.RemoveNoise = noise;
  settings.JPGCompression = width * 4;
  settings.ImageWidth = settings.ImageHeight = 500;
  return settings;
}

TEST_CASE("digest: blur, every width in every direction; detection; enlargement") {
  Digest digest;
  int turn = 0;
  for (int width = 0; width <= 20; ++width)
    for (int direction = 0; direction < 360; ++direction) digest.Call(3, ++turn, Blur(width, direction, 0, 0));
  for (int width = 0; width <= 20; ++width)
    for (const int ordinal : {5, 6, 7}) digest.Call(ordinal, ++turn, Blur(width, 0, 0, 0));
  CHECK(digest.value() == 0u);
}

TEST_CASE("digest: restoring, every width at every level, every direction") {
  Digest digest;
  int turn = 0;
  for (int width = 0; width <= 20; ++width)
    for (int accuracy = -2; accuracy <= 2; ++accuracy)
      if (width < 8 || accuracy < 1 || (width + accuracy) % 2 == 0)
        digest.Call(4, ++turn, Blur(width, 0, accuracy, turn % 5 - 1));
  for (int direction = 1; direction < 360; ++direction)
    digest.Call(4, ++turn,
                Blur(direction * 7 % 21, direction, direction % 25 == 0 ? 2 : direction % 4 - 2, turn % 5 - 1));
  CHECK(digest.value() == 0u);
}

}  // namespace
}  // namespace kelvo::test

#endif
