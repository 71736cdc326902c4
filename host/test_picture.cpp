#include "test_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

namespace kelvo::host {
namespace {

constexpr int kPanel = 256;  // pixels; three by two panels
constexpr int kColumns = 3;
constexpr int kRows = 2;
constexpr int kOversampling = 4;  // per axis
constexpr double kPi = std::numbers::pi;

// Red, green and blue, 0..1.
using Colour = std::array<double, 3>;

constexpr Colour kPaper = {0.95, 0.93, 0.88};
constexpr Colour kInk = {0.10, 0.12, 0.20};

Colour Mix(const Colour& a, const Colour& b, double share_of_b) {
  Colour mixed;
  for (int i = 0; i < 3; ++i) mixed[i] = a[i] + (b[i] - a[i]) * share_of_b;
  return mixed;
}

// Panels: the colour at a point, coordinates 0..256 from the panel's top left.

Colour Star(double x, double y) {
  constexpr int kSpokes = 36;
  const double dx = x - kPanel / 2.0;
  const double dy = y - kPanel / 2.0;
  const double radius = std::hypot(dx, dy);
  if (radius > 120) return {0.80, 0.84, 0.86};
  if (radius < 4) return {0.75, 0.15, 0.10};
  return std::sin(kSpokes * std::atan2(dy, dx)) > 0 ? kInk : kPaper;
}

Colour Paper(double, double y) {
  return y < 176 ? kPaper : kInk;
}

Colour Gratings(double x, double y) {
  constexpr std::array<double, 8> kPeriods = {16, 12, 10, 8, 6, 5, 4, 3};  // pixels
  constexpr Colour kRed = {0.80, 0.20, 0.15};
  constexpr Colour kTeal = {0.10, 0.55, 0.60};
  const double period = kPeriods[static_cast<int>(y / 32)];
  const bool upright = x < kPanel / 2.0;
  const double along = upright ? x : std::fmod(y, 32) + x * 0.5;  // the right half is slanted
  const bool dark = std::fmod(along, period) < period / 2;
  if (upright) return dark ? kInk : kPaper;
  return dark ? kRed : kTeal;
}

// Lattice noise in 0..1: a hash of the cell corners, blended smoothly.
double LatticeNoise(double x, double y) {
  const auto corner = [](int column, int row) {
    uint32_t hash = static_cast<uint32_t>(column) * 0x9E3779B1u ^ static_cast<uint32_t>(row) * 0x85EBCA77u;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    return ((hash ^ hash >> 13) & 0xFFFF) / 65535.0;
  };
  const int column = static_cast<int>(std::floor(x));
  const int row = static_cast<int>(std::floor(y));
  const auto ease = [](double t) { return t * t * (3 - 2 * t); };
  const double across = ease(x - column);
  const double top = std::lerp(corner(column, row), corner(column + 1, row), across);
  const double bottom = std::lerp(corner(column, row + 1), corner(column + 1, row + 1), across);
  return std::lerp(top, bottom, ease(y - row));
}

Colour Texture(double x, double y) {
  double height = 0;
  double size = 48;
  double weight = 0.4;
  for (int octave = 0; octave < 5; ++octave, size /= 2, weight *= 0.8) {
    height += weight * (LatticeNoise(x / size, y / size) - 0.5);
  }
  const double light = std::clamp(0.5 + height, 0.0, 1.0);
  const double moss = LatticeNoise(x / 60 + 9, y / 60 + 9);
  return Mix({0.08, 0.07, 0.06}, Mix({0.85, 0.78, 0.62}, {0.52, 0.75, 0.30}, moss), light);
}

Colour Ramps(double x, double y) {
  const double across = x / kPanel;
  if (y < 48) return {across, across, across};
  if (y < 96) return Mix({0.95, 0.80, 0.10}, {0.10, 0.20, 0.70}, across);
  if (y < 144) return Mix(kInk, {0.13, 0.15, 0.23}, across);  // hardly a ramp at all
  const double fade = std::exp(-(std::pow(x - 80, 2) + std::pow(y - 200, 2)) / 1500);
  const Colour sky = Mix({0.35, 0.55, 0.80}, {1.0, 0.95, 0.80}, fade);
  const bool roof = y > 165 + std::abs(x - 190) * 0.9;
  return roof ? Mix({0.45, 0.18, 0.12}, {0.30, 0.10, 0.08}, across) : sky;
}

Colour Lights(double x, double y) {
  constexpr Colour kNight = {0.04, 0.05, 0.09};
  if (y > 136) {  // zone plate: a period of 60 pixels in its middle, of 3 at its rim
    const double squared = std::pow(x - 128, 2) + std::pow(y - 196, 2);
    if (squared < 58.0 * 58.0) return Mix(kInk, kPaper, 0.5 + 0.5 * std::cos(kPi * squared / 180));
    return x < 128 ? Colour{0.90, 0.55, 0.15} : Colour{0.25, 0.35, 0.60};
  }
  constexpr std::array<Colour, 4> kLamps = {{{1, 1, 1}, {1, 0.75, 0.3}, {0.5, 0.8, 1}, {1, 0.35, 0.3}}};
  const int column = static_cast<int>(x / 32);
  const int row = static_cast<int>(y / 34);
  const double radius = 0.7 + column * 0.9 + row * 0.4;  // pixels
  const double distance = std::hypot(x - 32 * column - 16, y - 34 * row - 17);
  return distance < radius ? kLamps[row % 4] : kNight;
}

using Panel = Colour (*)(double x, double y);
constexpr Panel kPanels[kRows][kColumns] = {{Star, Paper, Gratings}, {Texture, Ramps, Lights}};

vips::VImage TextMask(const std::string& text, int size) {
  const std::string font = "DejaVu Sans " + std::to_string(size);
  return vips::VImage::text(text.c_str(), vips::VImage::option()->set("font", font.c_str())->set("dpi", 72));
}

// 8-bit sRGB pixels.
struct Canvas {
  int width;
  int height;
  std::vector<uint8_t> samples;

  void Put(int column, int row, const Colour& colour) {
    for (int i = 0; i < 3; ++i) {
      samples[(row * width + column) * 3 + i] = static_cast<uint8_t>(std::lround(255 * colour[i]));
    }
  }

  // Text of `size` pixels with its top left at (left, top); what lies outside is cut off.
  void Write(const std::string& text, int size, int left, int top, const Colour& colour) {
    const vips::VImage mask = TextMask(text, size);
    size_t bytes = 0;
    const std::unique_ptr<void, decltype(&g_free)> memory(mask.write_to_memory(&bytes), g_free);
    const auto* cover = static_cast<const uint8_t*>(memory.get());
    for (int row = 0; row < std::min(mask.height(), height - top); ++row) {
      for (int column = 0; column < std::min(mask.width(), width - left); ++column) {
        uint8_t* pixel = &samples[((top + row) * width + left + column) * 3];
        const Colour under = {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0};
        Put(left + column, top + row, Mix(under, colour, cover[row * mask.width() + column] / 255.0));
      }
    }
  }

  vips::VImage Image() {
    VipsImage* image =
        vips_image_new_from_memory_copy(samples.data(), samples.size(), width, height, 3, VIPS_FORMAT_UCHAR);
    if (image == nullptr) throw vips::VError();
    return vips::VImage(image).copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
  }
};

Canvas BlankCanvas(int width, int height, uint8_t level) {
  return {width, height, std::vector<uint8_t>(size_t{3} * width * height, level)};
}

Colour PixelOf(int column, int row) {
  const Panel panel = kPanels[row / kPanel][column / kPanel];
  Colour sum = {0, 0, 0};
  for (int row_part = 0; row_part < kOversampling; ++row_part) {
    for (int column_part = 0; column_part < kOversampling; ++column_part) {
      const double x = column % kPanel + (column_part + 0.5) / kOversampling;
      const double y = row % kPanel + (row_part + 0.5) / kOversampling;
      const Colour colour = panel(x, y);
      for (int i = 0; i < 3; ++i) sum[i] += colour[i] / (kOversampling * kOversampling);
    }
  }
  return sum;
}

void WriteTextPanel(Canvas& canvas) {
  constexpr Colour kBlue = {0.10, 0.25, 0.60};
  const int left = kPanel + 12;
  canvas.Write("Sphinx of black", 28, left, 10, kInk);
  canvas.Write("quartz, judge my vow.", 20, left, 48, kBlue);
  canvas.Write("Five boxing wizards jump quickly.", 13, left, 80, kInk);
  canvas.Write("The quick brown fox jumps over a lazy dog,", 10, left, 104, kInk);
  canvas.Write("0123456789  3 x 7 = 21  &amp;  (a + b) / c", 10, left, 124, kInk);
  canvas.Write("small print is what defocus takes away first", 8, left, 146, {0.35, 0.35, 0.40});
  canvas.Write("light on dark", 24, left, 186, kPaper);
  canvas.Write("and orange, smaller, on the night", 12, left, 224, {1.0, 0.65, 0.20});
}

}  // namespace

vips::VImage DrawTestPicture() {
  Canvas canvas = BlankCanvas(kColumns * kPanel, kRows * kPanel, 0);
  for (int row = 0; row < canvas.height; ++row) {
    for (int column = 0; column < canvas.width; ++column) canvas.Put(column, row, PixelOf(column, row));
  }
  WriteTextPanel(canvas);
  return canvas.Image();
}

vips::VImage SideBySide(const std::vector<vips::VImage>& pictures, const std::vector<std::string>& labels) {
  constexpr int kStrip = 26;  // pixels
  std::vector<vips::VImage> panes;
  for (size_t i = 0; i < pictures.size(); ++i) {
    Canvas strip = BlankCanvas(pictures[i].width(), kStrip, 32);
    strip.Write(labels[i], 15, 8, 5, {1, 1, 1});
    panes.push_back(strip.Image().join(pictures[i], VIPS_DIRECTION_VERTICAL));
  }
  return vips::VImage::arrayjoin(panes, vips::VImage::option()->set("shim", 4));
}

}  // namespace kelvo::host
