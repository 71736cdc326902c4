// Pictures in memory for tests.
#ifndef KELVO_TESTS_HOST_PICTURES_H
#define KELVO_TESTS_HOST_PICTURES_H

#include <doctest/doctest.h>

#include <cstdint>
#include <random>
#include <type_traits>
#include <vector>
#include <vips/vips8>

#include "tiling.h"

namespace kelvo::host {

template <typename T>
vips::VImage PictureOf(const std::vector<T>& samples, int width, int height, int bands) {
  const VipsBandFormat format = std::is_same_v<T, uint8_t> ? VIPS_FORMAT_UCHAR : VIPS_FORMAT_USHORT;
  return vips::VImage(
      vips_image_new_from_memory_copy(samples.data(), samples.size() * sizeof(T), width, height, bands, format));
}

template <typename T>
std::vector<T> SamplesOf(const vips::VImage& picture) {
  size_t bytes = 0;
  void* memory = picture.write_to_memory(&bytes);
  const T* samples = static_cast<const T*>(memory);
  std::vector<T> copy(samples, samples + bytes / sizeof(T));
  g_free(memory);
  return copy;
}

// Soft blobs with noise on top: something to restore everywhere.
template <typename T>
std::vector<T> Scene(int width, int height, int bands, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<T> samples;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      for (int band = 0; band < bands; ++band) {
        const int wave = (row / (7 + band) + column / 11) % 2 * 120 + 50;
        const int level = wave + static_cast<int>(random() % 32);
        samples.push_back(static_cast<T>(sizeof(T) == 1 ? level : level * 257 + static_cast<int>(random() % 257)));
      }
    }
  }
  return samples;
}

// A task leaves flat ground as it is. Each sample is a flat picture of its own: a single pixel, mirrored into a whole
// tile, with a band for every sample.
template <typename T>
void CheckFlatPictures(const std::vector<T>& samples, const TileTask& task) {
  const int bands = static_cast<int>(samples.size());
  const std::vector<T> results = SamplesOf<T>(ProcessTiles(PictureOf(samples, 1, 1, bands), bands, task));
  for (int i = 0; i < bands; ++i) {
    CAPTURE(samples[i]);
    REQUIRE(results[i] == samples[i]);
  }
}

}  // namespace kelvo::host

#endif  // KELVO_TESTS_HOST_PICTURES_H
