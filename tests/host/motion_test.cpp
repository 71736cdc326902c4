// Pictures with motion blur: flat ground, tiles that meet, directions.
#include <doctest/doctest.h>

#include <cstdlib>

#include "pictures.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

// The sanitizers make a tile slow.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kRareness = 8;
#else
constexpr int kRareness = 1;
#endif

std::vector<uint8_t> Levels(int first, int step) {
  std::vector<uint8_t> levels;
  for (int level = first; level < 256; level += step) levels.push_back(static_cast<uint8_t>(level));
  return levels;
}

// Every fraction that 16-bit samples have, each at another level.
std::vector<uint16_t> FractionalSamples(int first, int step) {
  std::vector<uint16_t> samples;
  for (int i = first; i < 257; i += step) samples.push_back(static_cast<uint16_t>(i * 37 % 255 * 257 + i));
  return samples;
}

struct Blur {
  int width, direction;
};

RestoreSettings SettingsOf(Blur blur, int accuracy) {
  RestoreSettings settings;
  settings.width = blur.width;
  settings.direction = blur.direction;
  settings.accuracy = accuracy;
  return settings;
}

// One pass, two passes, a smoothed observed tile with a model that is not a power of two, each in another orientation.
TEST_CASE("flat pictures restored from motion come back unchanged") {
  for (const Blur blur : {Blur{1, 200}, {4, 44}, {9, 93}, {12, 155}, {16, 60}, {20, 180}}) {
    CAPTURE(blur.width);
    const TileTask task = RestoreTask(SettingsOf(blur, -2));
    CheckFlatPictures(Levels(0, blur.width == 1 ? kRareness : 16 * kRareness), task);
    CheckFlatPictures(FractionalSamples(blur.width % 16, 16 * kRareness), task);
  }
  CheckFlatPictures(Levels(3, 32 * kRareness), RestoreTask(SettingsOf({7, 300}, 2)));
}

// Directions 0..45, 46..90, 91..135 and 136..180 are turned differently.
TEST_CASE("flat pictures blurred by motion come back unchanged") {
  for (int width = 1; width <= kMaxWidth; ++width) {
    const int direction = 9 * width;
    CAPTURE(width);
    CheckFlatPictures(Levels(width % 4, 4 * kRareness), BlurTask(width, false, direction));
    CheckFlatPictures(Levels(width % 4, 4 * kRareness), BlurTask(width, false, direction + 94));
  }
  CheckFlatPictures(Levels(0, 1), BlurTask(13, false, 71));
  CheckFlatPictures(FractionalSamples(0, 1), BlurTask(5, false, 30));
}

constexpr int kSize = 384, kOff = 64;

// What `task` makes of `picture`, and of the same picture cut so that the tiles lie elsewhere: the part of both with true
// surroundings. A task without a call changes nothing.
struct TwoGrids {
  std::vector<uint8_t> here, there;
};
TwoGrids Compare(const vips::VImage& picture, const TileTask& task) {
  constexpr int kBorder = 128, kPart = kSize - kOff - 2 * kBorder;
  const vips::VImage cut = picture.crop(kOff, kOff, kSize - kOff, kSize - kOff);
  const vips::VImage here = task.call ? ProcessTiles(picture, 1, task) : picture;
  const vips::VImage there = task.call ? ProcessTiles(cut, 1, task) : cut;
  return {SamplesOf<uint8_t>(here.crop(kOff + kBorder, kOff + kBorder, kPart, kPart)),
          SamplesOf<uint8_t>(there.crop(kBorder, kBorder, kPart, kPart))};
}

double MeanDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
  int sum = 0;
  for (size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum / static_cast<double>(a.size());
}

// A blur needs nothing but its surroundings; a restoration does not move what lies beyond its tile, which shows a little.
TEST_CASE("tiles with motion meet in every orientation") {
  const vips::VImage picture = PictureOf(Scene<uint8_t>(kSize, kSize, 1, 5), kSize, kSize, 1);
  for (const int direction : {30, 75, 120, 165, 280}) {
    CAPTURE(direction);
    const TwoGrids blurred = Compare(picture, BlurTask(20, false, direction));
    CHECK(blurred.here == blurred.there);
    const vips::VImage soft = ProcessTiles(picture, 1, BlurTask(3, false, direction)).copy_memory();
    const TwoGrids restored = Compare(soft, RestoreTask(SettingsOf({3, direction}, 0)));
    CHECK(MeanDifference(restored.here, restored.there) < 0.5);
    CHECK(MeanDifference(restored.here, Compare(soft, {}).here) > 5);
  }
}

}  // namespace
}  // namespace kelvo::host
