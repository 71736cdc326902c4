#include "tiling.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "pictures.h"

namespace kelvo::host {
namespace {

using Size = std::pair<int, int>;  // columns, rows
const std::vector<Size> kSizes = {{1, 1}, {1, 300}, {65, 130}, {127, 128}, {129, 257}, {385, 20}};

// The positions 0, 1 .. size - 1, size - 1 .. 1, 0, 0, 1 .. as long as needed; tile row 0 is `start` - 64.
int WalkedPosition(int start, int size, int index) {
  int position = 0;
  int direction = 1;
  const int steps = start - 64 + index;
  for (int step = 0; step < (steps < 0 ? -steps - 1 : steps); ++step) {
    if (position + direction < 0 || position + direction >= size) {
      direction = -direction;
    } else {
      position += direction;
    }
  }
  return position;
}

// A call that compares the whole tile with the mirrored picture and counts, per tile position and thread-safe.
struct Probe {
  const std::vector<uint8_t>& samples;
  Size size;
  int bands;
  std::mutex mutex;
  std::map<Size, int> calls;  // left, top
  int wrong_cells = 0;

  int32_t operator()(TileParams& params, const int32_t* tile) {
    const std::lock_guard<std::mutex> lock(mutex);
    const int band = calls[{params.TileLeft, params.TileTop}]++;
    std::array<int, 256> columns;
    for (int i = 0; i < 256; ++i) columns[i] = WalkedPosition(params.TileLeft, size.first, i);
    for (int row = 0; row < 256; ++row) {
      const int picture_row = WalkedPosition(params.TileTop, size.second, row);
      for (int column = 0; column < 256; ++column) {
        const int level = samples[(picture_row * size.first + columns[column]) * bands + band];
        if (tile[256 * row + column] != 128 * level) ++wrong_cells;
      }
    }
    return params.StructureSize == 1004 ? KELVO_OK : KELVO_BAD_SIZE;
  }
};

TileTask ProbeTask(Probe& probe, int overlap = 0) {
  TileTask task = BlurTask(3, false);
  task.overlap = overlap;
  task.call = [&probe](TileParams& params, int32_t* heap) { return probe(params, heap); };
  return task;
}

void CheckEveryTileOnce(const Probe& probe, int overlap = 0) {
  const int step = 128 - overlap;
  const auto cores = [&](int size) { return size <= 128 ? 1 : (size - overlap + step - 1) / step; };
  CHECK(probe.calls.size() == static_cast<size_t>(cores(probe.size.first) * cores(probe.size.second)));
  for (const auto& [position, count] : probe.calls) {
    CHECK(position.first % step == 0);
    CHECK(position.second % step == 0);
    CHECK(count == probe.bands);
  }
}

TEST_CASE("tiles hold the picture mirrored at its borders, and each is computed once") {
  for (const Size& size : kSizes) {
    for (int bands : {1, 3}) {
      CAPTURE(size.first);
      CAPTURE(size.second);
      const auto samples = Scene<uint8_t>(size.first, size.second, bands, 1);
      Probe probe{samples, size, bands, {}, {}};
      SamplesOf<uint8_t>(ProcessTiles(PictureOf(samples, size.first, size.second, bands), bands, ProbeTask(probe)));
      CHECK(probe.wrong_cells == 0);
      CheckEveryTileOnce(probe);
    }
  }
}

TEST_CASE("each tile is computed once for every kind of writer and number of threads") {
  const Size size = {700, 1200};
  const auto samples = Scene<uint8_t>(size.first, size.second, 3, 2);
  const vips::VImage picture = PictureOf(samples, size.first, size.second, 3);
  for (int threads : {1, 4}) {
    for (const char* suffix : {".png", ".jpg", ".webp", ".tif", ".tif[tile,tile-width=256,tile-height=256]"}) {
      CAPTURE(threads);
      CAPTURE(suffix);
      vips_concurrency_set(threads);
      Probe probe{samples, size, 3, {}, {}};
      void* file = nullptr;
      size_t bytes = 0;
      const vips::VImage image = picture.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
      ProcessTiles(image, 3, ProbeTask(probe)).write_to_buffer(suffix, &file, &bytes);
      g_free(file);
      CheckEveryTileOnce(probe);
    }
  }
  vips_concurrency_set(0);
}

// Every tile returns a level of its own; in between the picture must climb from one to the next in equal steps.
TEST_CASE("tiles that overlap fade into each other, and each is computed once") {
  constexpr int kOverlap = 16, kStep = 128 - kOverlap;
  const Size size = {500, 300};
  const auto samples = Scene<uint8_t>(size.first, size.second, 1, 6);
  for (const int threads : {1, 2, 7}) {
    vips_concurrency_set(threads);
    for (const char* suffix : {".png", ".tif", ".tif[tile,tile-width=256,tile-height=256]"}) {
      Probe probe{samples, size, 1, {}, {}};
      void* file = nullptr;
      size_t bytes = 0;
      ProcessTiles(PictureOf(samples, size.first, size.second, 1), 1, ProbeTask(probe, kOverlap))
          .write_to_buffer(suffix, &file, &bytes);
      g_free(file);
      CheckEveryTileOnce(probe, kOverlap);
    }
  }
  vips_concurrency_set(0);
  TileTask task = BlurTask(3, true);
  task.overlap = kOverlap;
  task.call = [](TileParams& params, int32_t* heap) {
    std::fill_n(heap, 65536, 128 * (params.TileLeft / kStep * 32 + params.TileTop / kStep * 2));
    return int32_t{KELVO_OK};
  };
  const auto faded = SamplesOf<uint8_t>(ProcessTiles(PictureOf(samples, size.first, size.second, 1), 1, task));
  const auto ramp = [](int position, int last) {
    const int tile = std::min(position / kStep, last), inside = position - tile * kStep;
    return tile == 0 || inside >= kOverlap ? tile : tile - 1 + (inside + 0.5) / kOverlap;
  };
  double worst = 0.0;
  for (int row = 0; row < size.second; ++row)
    for (int column = 0; column < size.first; ++column)
      worst = std::max(worst, std::abs(faded[row * size.first + column] - 32 * ramp(column, 4) - 2 * ramp(row, 2)));
  CHECK(worst <= 0.5);
}

template <typename T>
std::vector<T> Restored(const vips::VImage& picture, int colour_bands, int threads) {
  vips_concurrency_set(threads);
  RestoreSettings settings;
  settings.width = 3;
  std::vector<T> samples = SamplesOf<T>(ProcessTiles(picture, colour_bands, RestoreTask(settings)));
  vips_concurrency_set(0);
  return samples;
}

template <typename T>
void CheckThreadsAndAlpha() {
  constexpr int kWidth = 300;
  constexpr int kHeight = 200;
  const auto samples = Scene<T>(kWidth, kHeight, 4, 3);
  const vips::VImage picture = PictureOf(samples, kWidth, kHeight, 4);
  const std::vector<T> restored = Restored<T>(picture, 3, 1);
  CHECK(restored == Restored<T>(picture, 3, 4));
  int changed[4] = {};
  for (size_t i = 0; i < samples.size(); ++i) changed[i % 4] += restored[i] != samples[i];
  for (int band = 0; band < 3; ++band) CHECK(changed[band] > kWidth * kHeight / 2);
  CHECK(changed[3] == 0);
  // A channel is restored for itself: alone it gives what it gave among the others.
  std::vector<T> second;
  for (size_t i = 1; i < restored.size(); i += 4) second.push_back(restored[i]);
  CHECK(Restored<T>(picture.extract_band(1), 1, 2) == second);
}

TEST_CASE("results do not depend on threads, channels are independent and alpha is untouched") {
  SUBCASE("8 bit") {
    CheckThreadsAndAlpha<uint8_t>();
  }
  SUBCASE("16 bit") {
    CheckThreadsAndAlpha<uint16_t>();
  }
}

TEST_CASE("results do not depend on the order of tiles or on what the heap held") {
  const auto samples = Scene<uint8_t>(300, 300, 1, 4);
  const vips::VImage picture = PictureOf(samples, 300, 300, 1);
  const vips::VImage whole = PictureOf(Restored<uint8_t>(picture, 1, 1), 300, 300, 1);
  RestoreSettings settings;
  settings.width = 3;
  TileTask task = RestoreTask(settings);
  task.call = [restore = task.call](TileParams& params, int32_t* heap) {
    std::memset(heap + 65536, 0xCC, sizeof(int32_t) * (KELVO_HEAP_WORDS - 65536));
    return restore(params, heap);
  };
  const vips::VImage other = ProcessTiles(picture, 1, task);
  for (const auto& [left, top] : {Size{200, 200}, Size{0, 150}, Size{200, 0}, Size{0, 0}}) {
    CHECK(SamplesOf<uint8_t>(other.crop(left, top, 100, 100)) == SamplesOf<uint8_t>(whole.crop(left, top, 100, 100)));
  }
}

TEST_CASE("a refused call fails the picture with the library's message") {
  const TileTask task = BlurTask(21, false);
  const vips::VImage result = ProcessTiles(PictureOf<uint8_t>({1, 2, 3, 4}, 2, 2, 1), 1, task);
  CHECK_THROWS_WITH(SamplesOf<uint8_t>(result), doctest::Contains("Invalid Blur Width"));
  vips_error_clear();
}

}  // namespace
}  // namespace kelvo::host
