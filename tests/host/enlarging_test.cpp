#include "enlarging.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "enlarge/literal.h"
#include "errors.h"
#include "pictures.h"
#include "tiling.h"
#include "weighted_colour.h"
#include "xmp_size.h"

namespace kelvo::host {
namespace {

using Size = std::pair<int, int>;  // columns, rows

template <typename T>
std::vector<T> Enlarged(const std::vector<T>& samples, Size size, int bands, int colour_bands) {
  return SamplesOf<T>(EnlargePicture(PictureOf(samples, size.first, size.second, bands), colour_bands));
}

int Mirrored(int position, int size) {
  while (position < 0 || position >= size) position = position < 0 ? -1 - position : 2 * size - 1 - position;
  return position;
}

// One band, from the literal form of the rules, in steps of 50 source pixels.
template <typename T>
std::vector<T> EnlargedLiterally(const std::vector<T>& samples, Size size) {
  constexpr int kStep = 50;
  const auto [width, height] = size;
  std::vector<T> enlarged(samples.size() * 4);
  for (int top = 0; top < height; top += kStep)
    for (int left = 0; left < width; left += kStep) {
      std::vector<int32_t> tile;
      for (int row = 0; row < 256; ++row)
        for (int column = 0; column < 256; ++column)
          tile.push_back(
              DisplayOf(samples[Mirrored(top - 96 + row, height) * width + Mirrored(left - 96 + column, width)]));
      const std::vector<int32_t> result = test::EnlargeLiterally(tile);
      for (int y = 2 * top; y < 2 * std::min(top + kStep, height); ++y)
        for (int x = 2 * left; x < 2 * std::min(left + kStep, width); ++x) {
          const T original = samples[y / 2 * width + x / 2];
          const int32_t core = result[256 * (64 + y - 2 * top) + 64 + x - 2 * left];
          enlarged[y * 2 * width + x] = Changed(original, core, DisplayOf(original));
        }
    }
  return enlarged;
}

template <typename T>
void CheckAgainstLiteralForm() {
  for (const Size& size : {Size{1, 1}, Size{2, 3}, Size{1, 300}, Size{65, 130}, Size{129, 64}, Size{200, 150}}) {
    CAPTURE(size.first);
    CAPTURE(size.second);
    const auto samples = Scene<T>(size.first, size.second, 1, 1);
    CHECK((Enlarged(samples, size, 1, 1) == EnlargedLiterally(samples, size)));
  }
}

TEST_CASE("pictures of any size come out as if there were no tiles") {
  SUBCASE("8 bit") {
    CheckAgainstLiteralForm<uint8_t>();
  }
  SUBCASE("16 bit") {
    CheckAgainstLiteralForm<uint16_t>();
  }
}

TEST_CASE("bands are enlarged for themselves, on any number of threads, and the samples of a pixel stay in its place") {
  const Size size = {150, 140};
  const auto samples = Scene<uint8_t>(size.first, size.second, 3, 2);
  const std::vector<uint8_t> enlarged = Enlarged(samples, size, 3, 3);
  vips_concurrency_set(1);
  CHECK((Enlarged(samples, size, 3, 3) == enlarged));
  vips_concurrency_set(0);
  for (int band = 0; band < 3; ++band) {
    std::vector<uint8_t> alone, expected;
    for (size_t i = band; i < samples.size(); i += 3) alone.push_back(samples[i]);
    for (size_t i = band; i < enlarged.size(); i += 3) expected.push_back(enlarged[i]);
    CHECK((Enlarged(alone, size, 1, 1) == expected));
  }
  std::vector<uint8_t> lone(20 * 10, 30);
  lone[4 * 20 + 7] = 200;
  const std::vector<uint8_t> block = Enlarged(lone, {20, 10}, 1, 1);
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 40; ++x) CHECK(block[y * 40 + x] == (y / 2 == 4 && x / 2 == 7 ? 200 : 30));
}

TEST_CASE("flat ground keeps its exact samples, and so does every pixel that the library leaves alone") {
  for (int level = 0; level < 256; ++level) {
    const std::vector<uint8_t> samples(6, static_cast<uint8_t>(level));
    CHECK((Enlarged(samples, {3, 2}, 1, 1) == std::vector<uint8_t>(24, samples[0])));
  }
  for (int sample = 0; sample < 65536; sample += 119) {
    const std::vector<uint16_t> samples(6, static_cast<uint16_t>(sample));
    CHECK((Enlarged(samples, {3, 2}, 1, 1) == std::vector<uint16_t>(24, samples[0])));
  }
  int wrong = 0;
  for (int colour = 0; colour < 256; ++colour)
    for (int alpha = 0; alpha < 256; ++alpha) wrong += UnweightedColour<uint8_t>(colour, alpha, 0, 0) != colour;
  for (int colour = 0; colour < 65536; ++colour)
    for (const int alpha : {0, 1, 2, 127, 128, 32767, 65534, 65535})
      wrong += UnweightedColour<uint16_t>(colour, alpha, 0, 0) != colour;
  CHECK(wrong == 0);
}

template <typename T>
void CheckOpaque() {
  constexpr T kWhite = std::numeric_limits<T>::max();
  const Size size = {90, 70};
  const auto colours = Scene<T>(size.first, size.second, 3, 3);
  std::vector<T> with_alpha;
  for (size_t i = 0; i < colours.size(); ++i) {
    with_alpha.push_back(colours[i]);
    if (i % 3 == 2) with_alpha.push_back(kWhite);
  }
  std::vector<T> expected;
  const std::vector<T> enlarged = Enlarged(colours, size, 3, 3);
  for (size_t i = 0; i < enlarged.size(); ++i) {
    expected.push_back(enlarged[i]);
    if (i % 3 == 2) expected.push_back(kWhite);
  }
  CHECK((Enlarged(with_alpha, size, 4, 3) == expected));
}

TEST_CASE("opaque pictures are enlarged as if they had no transparency") {
  CheckOpaque<uint8_t>();
  CheckOpaque<uint16_t>();
}

TEST_CASE("the edge of a shape is that of its transparency, and what is invisible does not bleed into it") {
  constexpr int kSide = 60;
  std::vector<uint8_t> alpha, colour_and_alpha;
  for (int i = 0; i < kSide * kSide; ++i) {
    const int y = i / kSide - 30, x = i % kSide - 30;
    const bool inside = y * y + x * x < 300;
    alpha.push_back(inside ? 255 : 0);
    colour_and_alpha.insert(colour_and_alpha.end(), {static_cast<uint8_t>(inside ? 200 : 0), alpha.back()});
  }
  const std::vector<uint8_t> enlarged = Enlarged(colour_and_alpha, {kSide, kSide}, 2, 1);
  const std::vector<uint8_t> edge = Enlarged(alpha, {kSide, kSide}, 1, 1);
  int partial = 0, wrong = 0;
  for (size_t i = 0; i < edge.size(); ++i) {
    partial += edge[i] != 0 && edge[i] != 255;
    wrong += enlarged[2 * i + 1] != edge[i] || (edge[i] != 0 && enlarged[2 * i] != 200);
  }
  CHECK(partial > 20);
  CHECK(wrong == 0);
}

TEST_CASE("the resolution follows, and pages end where the picture ends") {
  vips::VImage picture = PictureOf(Scene<uint8_t>(10, 20, 1, 4), 10, 20, 1)
                             .copy(vips::VImage::option()->set("xres", 3.0)->set("yres", 4.0));
  picture.set(VIPS_META_PAGE_HEIGHT, 20);
  const vips::VImage enlarged = EnlargePicture(picture, 1);
  CHECK(enlarged.width() == 20);
  CHECK(enlarged.height() == 40);
  CHECK(enlarged.xres() == 6.0);
  CHECK(enlarged.yres() == 8.0);
  CHECK(enlarged.get_int(VIPS_META_PAGE_HEIGHT) == 40);
}

TEST_CASE("an XMP packet tells the new size where it told the old one") {
  const std::pair<const char*, const char*> packets[] = {
      {"", ""},
      {"tiff:ImageWidth=\"150\" tiff:ImageLength='140'", "tiff:ImageWidth=\"300\" tiff:ImageLength='280'"},
      {"<exif:PixelXDimension>150</exif:PixelXDimension>", "<exif:PixelXDimension>300</exif:PixelXDimension>"},
      {"<exif:PixelYDimension >140<", "<exif:PixelYDimension >280<"},
      {"tiff:XResolution=\"720000/10000\"", "tiff:XResolution=\"1440000/10000\""},
      {"tiff:YResolution = \"72\"", "tiff:YResolution = \"144\""},
      {"tiff:ImageWidth=\"140\"", "tiff:ImageWidth=\"140\""},  // not this picture's
      {"tiff:ImageWidth=\"\" tiff:ImageWidth=150", "tiff:ImageWidth=\"\" tiff:ImageWidth=150"},
      {"tiff:XResolution=\"99999999999999999999\"", "tiff:XResolution=\"99999999999999999999\""},
      {"tiff:ImageWidth", "tiff:ImageWidth"},
      {"tiff:ImageWidth=\"", "tiff:ImageWidth=\""}};
  for (const auto& [packet, expected] : packets) CHECK(WithDoubledSize(packet, 150, 140) == expected);
  vips::VImage picture = PictureOf(Scene<uint8_t>(150, 140, 1, 4), 150, 140, 1);
  vips_image_set_blob_copy(picture.get_image(), VIPS_META_XMP_NAME, packets[1].first, std::strlen(packets[1].first));
  size_t bytes = 0;
  const vips::VImage enlarged = EnlargePicture(picture, 1);
  const auto* packet = static_cast<const char*>(enlarged.get_blob(VIPS_META_XMP_NAME, &bytes));
  CHECK(std::string(packet, bytes) == packets[1].second);
}

TEST_CASE("what would be too large, and other formats, are refused") {
  const vips::VImage wide = vips::VImage::black(VIPS_MAX_COORD / 2 + 1, 1);
  CHECK_THROWS_WITH_AS(EnlargePicture(wide, 1), doctest::Contains("5000001 x 1"), HostError);
  CHECK_THROWS_AS(EnlargePicture(vips::VImage::black(4, 4).cast(VIPS_FORMAT_FLOAT), 1), HostError);
}

TEST_CASE("restoring and enlarging in one pass: the same as one after the other, each tile restored once") {
  const Size size = {700, 600};
  const auto samples = Scene<uint8_t>(size.first, size.second, 1, 5);
  const vips::VImage picture = PictureOf(samples, size.first, size.second, 1);
  RestoreSettings settings;
  settings.width = 3;
  TileTask task = RestoreTask(settings);
  std::mutex mutex;
  std::map<Size, int> calls;
  const auto count = [&, restore = task.call](TileParams& params, int32_t* heap) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      ++calls[{params.TileLeft, params.TileTop}];
    }
    return restore(params, heap);
  };
  const auto restored = SamplesOf<uint8_t>(ProcessTiles(picture, 1, task));
  const auto expected = Enlarged(restored, size, 1, 1);
  task.call = count;
  for (const int threads : {1, 4})
    for (const char* suffix : {".v", ".png", ".tif[tile,tile-width=256,tile-height=256]"}) {
      CAPTURE(threads);
      CAPTURE(suffix);
      calls.clear();
      vips_concurrency_set(threads);
      const vips::VImage result = EnlargePicture(ProcessTiles(picture, 1, task), 1);
      if (std::strcmp(suffix, ".v") == 0) {
        CHECK((SamplesOf<uint8_t>(result) == expected));
      } else {
        void* file = nullptr;
        size_t bytes = 0;
        result.write_to_buffer(suffix, &file, &bytes);
        g_free(file);
      }
      CHECK(calls.size() == 7 * 6);
      for (const auto& [position, times] : calls) CHECK(times == 1);
    }
  vips_concurrency_set(0);
}

}  // namespace
}  // namespace kelvo::host
