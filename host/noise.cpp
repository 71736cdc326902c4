#include "noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <vector>

namespace kelvo::host {
namespace {

constexpr int kSquare = 16;
constexpr int kNearBlack = 2, kNearWhite = 253;  // levels at which noise may be cut off

vips::VImage SquareMeans(const vips::VImage& image) {
  return image.shrink(kSquare, kSquare);
}

// All values of a small picture of one float band, row by row.
std::vector<float> ValuesOf(const vips::VImage& image) {
  size_t bytes = 0;
  const std::unique_ptr<void, decltype(&g_free)> memory(image.cast(VIPS_FORMAT_FLOAT).write_to_memory(&bytes), g_free);
  const auto* values = static_cast<const float*>(memory.get());
  return {values, values + bytes / sizeof(float)};
}

float TenthPercentile(std::vector<float> values) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 10);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// `levels`: one band, 8-bit grey levels with their fraction.
double NoiseOfBand(const vips::VImage& levels) {
  const vips::VImage mask = vips::VImage::new_matrixv(3, 3, 1., -2., 1., -2., 4., -2., 1., -2., 1.);
  const std::vector<float> rough =
      ValuesOf(SquareMeans(levels.conv(mask, vips::VImage::option()->set("precision", VIPS_PRECISION_FLOAT)).abs()));
  const std::vector<float> clipped = ValuesOf(SquareMeans((levels <= kNearBlack) | (levels >= kNearWhite)));
  std::vector<float> whole;
  for (size_t i = 0; i < rough.size(); ++i)
    if (clipped[i] == 0.0f) whole.push_back(rough[i]);
  const float mean = TenthPercentile(whole.empty() ? rough : whole);
  // The mask multiplies the deviation by 6, the sum of its squares being 36; a normal deviate is sqrt(2 / pi) of it in
  // the mean.
  return mean / 6.0 * std::sqrt(std::numbers::pi / 2.0);
}

}  // namespace

double NoiseOf(const vips::VImage& image, int colour_bands) {
  if (image.width() < kSquare || image.height() < kSquare) return 0.0;
  double sum = 0.0;
  for (int band = 0; band < colour_bands; ++band) {
    const double scale = image.format() == VIPS_FORMAT_USHORT ? 1.0 / 257.0 : 1.0;
    sum += NoiseOfBand(image.extract_band(band).linear(scale, 0.0));
  }
  return sum / colour_bands;
}

int NoiseLevel(double sigma, int jpeg) {
  // Between the noises that the levels are made for (stages/fit_plan.cpp), and measured: at narrow widths noise of 3
  // levels needs the highest, at wide ones it costs a tenth of a dB.
  constexpr std::array<double, 4> kLimits = {0.38, 0.75, 1.5, 2.4};
  return static_cast<int>(std::lower_bound(kLimits.begin(), kLimits.end(), jpeg < 10 ? sigma : 4 * sigma) -
                          kLimits.begin()) -
         1;
}

}  // namespace kelvo::host
