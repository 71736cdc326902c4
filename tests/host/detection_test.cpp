#include "detection.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <utility>

#include "pictures.h"
#include "staging.h"
#include "tile_window.h"

namespace kelvo::host {
namespace {

struct Size {
  int columns, rows;
};

// One block through all tiles, the way a host without threads goes.
template <typename T>
TileParams MeasuredSerially(const std::vector<T>& samples, Size size, int bands) {
  std::vector<int32_t> heap(KELVO_HEAP_WORDS);
  TileParams params{};
  params.StructureSize = sizeof params;
  params.ImageWidth = size.columns;
  params.ImageHeight = size.rows;
  for (params.TileTop = 0; params.TileTop < size.rows; params.TileTop += 128)
    for (params.TileLeft = 0; params.TileLeft < size.columns; params.TileLeft += 128) {
      int32_t* cell = heap.data();
      for (const int row : MirroredPositions(params.TileTop, size.rows))
        for (const int column : MirroredPositions(params.TileLeft, size.columns)) {
          const T* pixel = &samples[static_cast<size_t>((row * size.columns + column) * bands)];
          *cell++ = bands < 3 ? DisplayOf(pixel[0])
                              : (38 * DisplayOf(pixel[0]) + 75 * DisplayOf(pixel[1]) + 15 * DisplayOf(pixel[2])) / 128;
        }
      CHECK(kelvo_detect_jpg_compression_for_tile(&params, heap.data()) == KELVO_OK);
      CHECK(kelvo_detect_blur_width_for_tile(&params, heap.data()) == KELVO_OK);
    }
  return params;
}

template <typename T>
void CompareWithSerial(Size size, int bands) {
  const auto samples = Scene<T>(size.columns, size.rows, bands, 5);
  const vips::VImage picture = PictureOf(samples, size.columns, size.rows, bands);
  const TileParams serial = MeasuredSerially(samples, size, bands);
  for (const int threads : {1, 2, 5}) {
    CAPTURE(threads);
    vips_concurrency_set(threads);
    const DetectionSums sums = Measure(picture, bands < 3 ? 1 : 3, {}, false);
    vips_concurrency_set(0);
    CHECK(sums.tiles == serial.JPGTileCount);
    CHECK(std::equal(sums.votes.begin(), sums.votes.end(), serial.BlurWidthVotes));
    CHECK(std::equal(sums.column_steps.begin(), sums.column_steps.end(), serial.JPGColumnPhaseSums));
    CHECK(std::equal(sums.row_steps.begin(), sums.row_steps.end(), serial.JPGRowPhaseSums));
    const Detection found = Decide(sums);
    CHECK(found.width == serial.DetectedBlurWidth);
    CHECK(found.jpeg == serial.JPGCompression);
    CHECK(found.column_phase == serial.JPGHorizontalOffset);
    CHECK(found.row_phase == serial.JPGVerticalOffset);
    CHECK(std::equal(found.smoothed_votes.begin(), found.smoothed_votes.end(), serial.SmoothedBlurWidthVotes));
  }
}

TEST_CASE("tiles measured in parallel add up to those measured one after the other") {
  CompareWithSerial<uint8_t>({420, 300}, 3);
  CompareWithSerial<uint8_t>({300, 130}, 2);
  CompareWithSerial<uint16_t>({260, 140}, 4);
}

// The picture as a JPEG file holds it, cut so that the grid lies at the given phases.
vips::VImage Compressed(const vips::VImage& picture, int column_phase, int row_phase) {
  VipsBlob* file = picture.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
                       .jpegsave_buffer(vips::VImage::option()->set("Q", 50));
  const vips::VImage decoded = vips::VImage::jpegload_buffer(file).copy_memory();
  vips_area_unref(VIPS_AREA(file));
  const int left = (8 - column_phase) % 8, top = (8 - row_phase) % 8;
  return decoded.crop(left, top, decoded.width() - left, decoded.height() - top);
}

TEST_CASE("the JPEG grid of a cut picture is found") {
  std::vector<uint8_t> samples;
  for (int row = 0; row < 200; ++row)
    for (int column = 0; column < 260; ++column)
      for (const int band : {0, 1, 2})
        samples.push_back(static_cast<uint8_t>(row * row / 600 + column * column / 700 + 9 * band));
  const vips::VImage picture = PictureOf(samples, 260, 200, 3);
  CHECK(Decide(Measure(picture, 3, {}, false)).jpeg == 0);
  for (const auto& [column_phase, row_phase] : {std::pair{0, 0}, {5, 3}, {7, 1}}) {
    const Detection found = Decide(Measure(Compressed(picture, column_phase, row_phase), 3, {}, false));
    CHECK(found.jpeg >= 20);
    CHECK(found.column_phase == column_phase);
    CHECK(found.row_phase == row_phase);
  }
}

TEST_CASE("strength and phase of the grid go into the block that restores") {
  RestoreSettings settings;
  settings.width = 3;
  settings.jpeg = 30;
  settings.jpeg_column = 5;
  settings.jpeg_row = 2;
  const TileParams params = RestoreTask(settings).params;
  CHECK(params.JPGCompression == 30);
  CHECK(params.JPGHorizontalOffset == 5);
  CHECK(params.JPGVerticalOffset == 2);
}

TEST_CASE("a verdict can be had on sums beyond 32 bits") {
  DetectionSums sums;
  sums.votes[7] = int64_t{3} << 40;
  sums.votes[2] = int64_t{1} << 40;
  sums.column_steps.fill(int64_t{1} << 40);
  sums.row_steps.fill(int64_t{1} << 40);
  sums.column_steps[6] = sums.row_steps[1] = int64_t{3} << 40;
  const Detection found = Decide(sums);
  CHECK(found.width == 6);
  CHECK(found.smoothed_votes[6] == int64_t{3} << 39);
  CHECK(found.Votes() == "6 40%, 5 20%, 7 20%");
  CHECK(found.column_phase == 6);
  CHECK(found.row_phase == 1);
  CHECK(found.jpeg == 25);  // 3 over the mean of 1.25: 2.4
}

TEST_CASE("flat, tiny and noisy pictures are no reason for alarm") {
  for (const Size& size : {Size{1, 1}, {1, 300}, {37, 20}}) {
    const auto samples = Scene<uint8_t>(size.columns, size.rows, 1, 6);
    const Detection found = Decide(Measure(PictureOf(samples, size.columns, size.rows, 1), 1, {}, false));
    if (size.rows == 1) CHECK_FALSE(found.HasEdges());
    CHECK(found.width <= 20);
  }
  const Detection flat = Decide(Measure(PictureOf(std::vector<uint8_t>(300 * 200, 90), 300, 200, 1), 1, {}, false));
  CHECK_FALSE(flat.HasEdges());
  CHECK(flat.Votes() == "none");
  CHECK(flat.width == 0);
  CHECK(flat.jpeg == 0);
  std::vector<uint16_t> noise;
  for (uint32_t i = 0; i < 260 * 150; ++i) noise.push_back(static_cast<uint16_t>((i * 2654435761u) >> 9));
  CHECK(Decide(Measure(PictureOf(noise, 260, 150, 1), 1, {}, false)).jpeg == 0);
}

TEST_CASE("only what is wanted is measured, and other formats are refused") {
  const auto samples = Scene<uint8_t>(200, 200, 1, 7);
  const vips::VImage picture = PictureOf(samples, 200, 200, 1);
  CHECK(Measure(picture, 1, {true, false}, false).tiles == 0);
  const DetectionSums grid = Measure(picture, 1, {false, true}, false);
  CHECK(grid.tiles == 4);
  CHECK(grid.votes == std::array<int64_t, kVotedWidths>{});
  CHECK_THROWS(Measure(picture.cast(VIPS_FORMAT_FLOAT), 1, {}, false));
}

}  // namespace
}  // namespace kelvo::host
