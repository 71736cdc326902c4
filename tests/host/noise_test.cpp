#include "noise.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
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

}  // namespace
}  // namespace kelvo::host
