#include "luma.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <vector>

#include "pictures.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

// Fields of strong colours with edges between all of them, and a ramp down each so that dark and bright ones are there.
std::vector<uint16_t> ColourChart(int columns, int rows) {
  constexpr uint16_t kFields[][3] = {
      {60000, 5000, 5000}, {5000, 60000, 5000},  {5000, 5000, 60000}, {65535, 65535, 0},     {0, 65535, 65535},
      {65535, 0, 65535},   {20000, 40000, 9000}, {0, 0, 0},           {65535, 65535, 65535}, {30000, 30000, 30000}};
  std::vector<uint16_t> samples;
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; ++column)
      for (int band = 0; band < 3; ++band)
        samples.push_back(
            static_cast<uint16_t>(kFields[(column / 17 + 3 * (row / 23)) % 10][band] * (row + 20) / (rows + 20)));
  return samples;
}

vips::VImage Rgb16(const std::vector<uint16_t>& samples, int columns, int rows) {
  vips::VImage image(
      vips_image_new_from_memory_copy(samples.data(), samples.size() * 2, columns, rows, 3, VIPS_FORMAT_USHORT));
  return image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
}

std::vector<uint16_t> SamplesIn(const vips::VImage& image) {
  size_t bytes = 0;
  void* memory = image.write_to_memory(&bytes);
  const auto* first = static_cast<const uint16_t*>(memory);
  std::vector<uint16_t> samples(first, first + bytes / 2);
  g_free(memory);
  return samples;
}

}  // namespace

TEST_CASE("luma: no hue shifts on a chart of colour edges") {
  constexpr int kColumns = 170, kRows = 150;
  const vips::VImage chart = Rgb16(ColourChart(kColumns, kRows), kColumns, kRows);
  const std::vector<uint16_t> before = SamplesIn(ProcessTiles(chart, 3, BlurTask(4, false)));
  RestoreSettings settings;
  settings.width = 4;
  const std::vector<uint16_t> after = SamplesIn(ProcessLuma(Rgb16(before, kColumns, kRows), RestoreTask(settings)));
  REQUIRE(after.size() == before.size());
  int changed = 0, shifted = 0;
  for (size_t i = 0; i < after.size(); i += 3) {
    // The hue is told by the ratio of differences between channels. Rounding moves a difference by at most 1.
    const int64_t red = before[i] - before[i + 1], blue = before[i + 2] - before[i + 1];
    const int64_t new_red = after[i] - after[i + 1], new_blue = after[i + 2] - after[i + 1];
    if (std::llabs(red * new_blue - blue * new_red) > std::llabs(red) + std::llabs(blue)) ++shifted;
    if (red * new_red < 0 || blue * new_blue < 0) ++shifted;
    if (after[i] != before[i]) ++changed;
  }
  CHECK(shifted == 0);
  CHECK(changed > kColumns * kRows / 4);
}

TEST_CASE("luma: a gray picture is restored as by channels") {
  constexpr int kColumns = 140, kRows = 90;
  std::vector<uint16_t> gray = ColourChart(kColumns, kRows);
  for (size_t i = 0; i < gray.size(); i += 3) gray[i + 1] = gray[i + 2] = gray[i];
  RestoreSettings settings;
  settings.width = 3;
  const vips::VImage image = Rgb16(gray, kColumns, kRows);
  CHECK(SamplesIn(ProcessLuma(image, RestoreTask(settings))) ==
        SamplesIn(ProcessTiles(image, 3, RestoreTask(settings))));
}

}  // namespace kelvo::host
