#include "noise.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "pictures.h"

namespace kelvo::host {
namespace {

// A soft picture with noise of `sigma` grey levels; `white` columns on the left are blown out.
template <typename T>
vips::VImage Noisy(double sigma, int white) {
  constexpr int kWidth = 320, kHeight = 240, kBands = 3;
  std::mt19937 random(7);
  std::normal_distribution<double> noise(0.0, sigma == 0.0 ? 1e-9 : sigma);
  std::vector<T> samples;
  for (int row = 0; row < kHeight; ++row)
    for (int column = 0; column < kWidth; ++column)
      for (int band = 0; band < kBands; ++band) {
        const double level = 120 + 60 * std::sin(row * 0.05) * std::cos(column * 0.03 + band) + noise(random);
        const double shown = std::clamp(column < white ? 255.0 : level, 0.0, 255.0);
        samples.push_back(static_cast<T>(std::lround(shown * (sizeof(T) == 1 ? 1 : 257))));
      }
  return PictureOf(samples, kWidth, kHeight, kBands);
}

TEST_CASE("the noise of a soft picture is measured, whatever its depth and however much of it is blown out") {
  const struct {
    double sigma;
    int level;
  } cases[] = {{0.5, 0}, {1.0, 1}, {2.0, 2}, {6.0, 3}};
  for (const int white : {0, 200})
    for (const auto& expected : cases) {
      const double sigma = expected.sigma;
      CAPTURE(sigma);
      CHECK(NoiseOf(Noisy<uint8_t>(sigma, white), 3) == doctest::Approx(sigma).epsilon(0.15));
      CHECK(NoiseOf(Noisy<uint16_t>(sigma, white), 3) == doctest::Approx(sigma).epsilon(0.15));
      CHECK(NoiseLevel(NoiseOf(Noisy<uint8_t>(sigma, white), 3)) == expected.level);
    }
  CHECK(NoiseLevel(NoiseOf(Noisy<uint8_t>(0.0, 0), 3)) == -1);
  CHECK(NoiseLevel(0.4, 9) == 0);
  CHECK(NoiseLevel(0.4, 10) == 2);
  CHECK(NoiseOf(Noisy<uint16_t>(0.0, 320), 3) < 0.01);
  CHECK(NoiseOf(PictureOf<uint8_t>({1, 2, 3, 4}, 2, 2, 1), 1) == 0.0);
}

// By the letter: the second differences of second differences, averaged over squares of a picture whose border goes on.
template <typename T>
double LiteralNoise(const std::vector<T>& samples, int width, int height, int bands, int band) {
  const int scale = sizeof(T) == 1 ? 1 : 257;
  const auto at = [&](int row, int column) {
    const int inside = std::clamp(row, 0, height - 1) * width + std::clamp(column, 0, width - 1);
    return int{samples[static_cast<size_t>(inside * bands + band)]};
  };
  const auto bend = [&](int row, int column) {
    return at(row, column - 1) - 2 * at(row, column) + at(row, column + 1);
  };
  std::vector<double> whole, all;
  for (int top = 0; top + 8 <= height; top += 16)
    for (int left = 0; left + 8 <= width; left += 16) {
      double sum = 0.0;
      bool clipped = false;
      for (int i = 0; i < 256; ++i) {
        const int row = std::min(top + i / 16, height - 1), column = std::min(left + i % 16, width - 1);
        sum += std::abs(bend(row - 1, column) - 2 * bend(row, column) + bend(row + 1, column));
        clipped |= at(row, column) <= 2 * scale || at(row, column) >= 253 * scale;
      }
      all.push_back(sum / 256);
      if (!clipped) whole.push_back(sum / 256);
    }
  std::vector<double>& counted = whole.empty() ? all : whole;
  std::sort(counted.begin(), counted.end());
  return counted[counted.size() / 10] / scale / 6.0 * std::sqrt(std::acos(-1.0) / 2.0);
}

template <typename T>
void CheckLiteral(int width, int height, int bands, int colour_bands) {
  std::mt19937 random(static_cast<unsigned>(width));
  std::vector<T> samples(static_cast<size_t>(width * height * bands));
  const T limits[] = {static_cast<T>(2 * (sizeof(T) == 1 ? 1 : 257)), static_cast<T>(253 * (sizeof(T) == 1 ? 1 : 257)),
                      0, std::numeric_limits<T>::max()};
  for (T& sample : samples)
    sample = random() % 400 == 0 ? limits[random() % 4] : static_cast<T>(limits[0] + 1 + random() % (limits[1] / 2));
  double expected = 0.0;
  for (int band = 0; band < colour_bands; ++band)
    expected += LiteralNoise(samples, width, height, bands, band) / colour_bands;
  for (const int threads : {1, 3}) {
    vips_concurrency_set(threads);
    CHECK(NoiseOf(PictureOf(samples, width, height, bands), colour_bands) == doctest::Approx(expected).epsilon(1e-12));
  }
  vips_concurrency_set(0);
}

TEST_CASE("noise is what its definition says, at every border of squares and tiles") {
  for (const int width : {16, 23, 24, 127, 129, 135, 136, 150, 300})
    for (const int height : {16, 130, 145}) {
      CAPTURE(width);
      CAPTURE(height);
      CheckLiteral<uint8_t>(width, height, 1, 1);
      CheckLiteral<uint16_t>(width, height, 3, 3);
      CheckLiteral<uint8_t>(width, height, 4, 3);
    }
}

}  // namespace
}  // namespace kelvo::host
