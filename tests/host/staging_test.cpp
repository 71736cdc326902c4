#include "staging.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "pictures.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int kStep = 7;  // the sanitizers make a tile slow
#else
constexpr int kStep = 1;
#endif

std::vector<uint8_t> AllLevels() {
  std::vector<uint8_t> levels;
  for (int level = 0; level < 256; level += kStep) levels.push_back(static_cast<uint8_t>(level));
  return levels;
}

// All fractions that 16-bit samples have at some levels, and a random rest.
std::vector<uint16_t> ManySamples16() {
  std::vector<uint16_t> samples = {65533, 65534, 65535};
  for (int level : {0, 100}) {
    for (int step = 0; step < 257; step += kStep) samples.push_back(static_cast<uint16_t>(level * 257 + step));
  }
  std::mt19937 random(20);
  for (int i = 0; i < 60; i += kStep) samples.push_back(static_cast<uint16_t>(random()));
  return samples;
}

TEST_CASE("samples become display values rounded to nearest") {
  for (int sample = 0; sample <= 65535; ++sample) {
    const int32_t display = DisplayOf(static_cast<uint16_t>(sample));
    REQUIRE(display == std::lround(sample * 32640.0 / 65535.0));
  }
  CHECK(DisplayOf(uint8_t{255}) == KELVO_DISPLAY_WHITE);
  CHECK(DisplayOf(uint16_t{65535}) == KELVO_DISPLAY_WHITE);
}

TEST_CASE("a change is added rounded and clamped, and no change keeps the exact sample") {
  for (int level : {0, 1, 2, 3, 77, 254, 255}) {
    const auto sample8 = static_cast<uint8_t>(level);
    const auto sample16 = static_cast<uint16_t>(level * 257 + (level == 255 ? 0 : 61));
    const int32_t flat = level * 128 + 3;
    for (int change : {-40000, -300, -65, -64, -63, -1, 0, 1, 63, 64, 65, 300, 40000}) {
      const double exact8 = std::floor(level + change / 128.0 + 0.5);
      const double exact16 = std::floor(sample16 + change * 65535.0 / 32640.0 + 0.5);
      CHECK(Changed(sample8, flat + change, flat) == std::clamp(exact8, 0.0, 255.0));
      CHECK(Changed(sample16, flat + change, flat) == std::clamp(exact16, 0.0, 65535.0));
    }
  }
}

TEST_CASE("raw values are rounded to the depth") {
  for (int32_t core : {0, 1, 63, 64, 127, 128, 4321, 32575, 32576, 32640, 32641, 32767}) {
    CHECK(SampleOf<uint8_t>(core) == std::min(255.0, std::floor(core / 128.0 + 0.5)));
    CHECK(SampleOf<uint16_t>(core) == std::min(65535.0, std::floor(core * 65535.0 / 32640.0 + 0.5)));
  }
}

// The runs differ in what they make of flat ground: a single sharpening (Accuracy -2 at width 4), sharpening followed
// by iterations (-1 at width 5), iterations alone (width 7), two passes (width 12).
TEST_CASE("flat pictures come back unchanged") {
  struct Run {
    int width;
    int accuracy;
  };
  for (const Run& run : {Run{1, -2}, {4, -2}, {5, -1}, {7, -2}, {12, -2}}) {
    RestoreSettings settings;
    settings.width = run.width;
    settings.accuracy = run.accuracy;
    CAPTURE(run.width);
    CheckFlatPictures(AllLevels(), RestoreTask(settings));
    CheckFlatPictures(ManySamples16(), RestoreTask(settings));
  }
  for (int width = 1; width <= kMaxWidth; ++width) {
    CheckFlatPictures(AllLevels(), BlurTask(width, false));
  }
  CheckFlatPictures(ManySamples16(), BlurTask(5, false));
}

}  // namespace
}  // namespace kelvo::host
