#include "luma.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "staging.h"
#include "tile_operation.h"
#include "tile_window.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

// ITU-R BT.601, in 1/65536. Weighted sums of white fit 32 bits without sign.
constexpr uint32_t kRed = 19595, kGreen = 38470, kBlue = 7471;
static_assert(kRed + kGreen + kBlue == 65536);

constexpr int kColourBands = 3;
constexpr int32_t kWhite16 = 65535;

// Samples of T count as this many of 16 bits.
template <Sample T>
constexpr int32_t kScaleOf = kWhite16 / std::numeric_limits<T>::max();

// 0..65535, rounded to nearest; white of any depth is 65535, and a gray pixel of 16 bits keeps its value.
template <Sample T>
uint16_t LumaOf(const T* pixel) {
  const uint32_t sum = kRed * pixel[0] + kGreen * pixel[1] + kBlue * pixel[2];
  return static_cast<uint16_t>((sum * uint32_t{kScaleOf<T>} + 32768) >> 16);
}

// The pixel with the luma `after` instead of `before`, both 0..65535, where differences between channels do not fit the
// range: they are scaled down so that the outermost channel ends at the border of the range.
template <Sample T>
void Squeeze(T* pixel, int64_t before, int64_t after) {
  constexpr int64_t kScale = kScaleOf<T>;
  const auto [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
  const int64_t below = before - low * kScale, above = high * kScale - before;
  // The share of the differences that remains is room / need, at most 1.
  int64_t room = 1, need = 1;
  const auto narrow = [&room, &need](int64_t new_room, int64_t new_need) {
    if (new_need <= new_room || new_room * need >= room * new_need) return;
    room = new_room;
    need = new_need;
  };
  narrow(after, below);
  narrow(kWhite16 - after, above);
  for (int band = 0; band < kColourBands; ++band) {
    const int64_t difference = (pixel[band] * kScale - before) * room;
    const int64_t exact = after * need + difference;  // 1 / (need kScale) of a sample
    const int64_t unit = need * kScale;
    pixel[band] = ClampTo<T>(static_cast<int32_t>((2 * std::max<int64_t>(exact, 0) + unit) / (2 * unit)));
  }
}

// The pixel with the luma `after` instead of `before`. Differences between channels are kept where the range allows it.
template <Sample T>
void GiveLuma(T* pixel, int32_t before, int32_t after) {
  constexpr int32_t kScale = kScaleOf<T>;
  const int32_t shift = after - before;
  const int32_t moved[kColourBands] = {pixel[0] * kScale + shift, pixel[1] * kScale + shift, pixel[2] * kScale + shift};
  const auto [low, high] = std::minmax({moved[0], moved[1], moved[2]});
  if (low < 0 || high > kWhite16) return Squeeze(pixel, before, after);
  for (int band = 0; band < kColourBands; ++band) pixel[band] = static_cast<T>((moved[band] + kScale / 2) / kScale);
}

template <Sample T>
void LumaLine(const VipsRegion* in, VipsRegion* out, int row) {
  const VipsRect& area = out->valid;
  const T* pixel = reinterpret_cast<const T*>(VIPS_REGION_ADDR(in, area.left, row));
  auto* luma = reinterpret_cast<uint16_t*>(VIPS_REGION_ADDR(out, area.left, row));
  WithSpacing(in->im->Bands, [&](auto spacing) {
    for (int i = 0; i < area.width; ++i) luma[i] = LumaOf(pixel + i * spacing);
  });
}

int ComputeLuma(VipsRegion* out, void* sequence, void*, void*, gboolean*) {
  auto* in = static_cast<VipsRegion*>(sequence);
  if (vips_region_prepare(in, &out->valid) != 0) return -1;
  const bool bytes = in->im->BandFmt == VIPS_FORMAT_UCHAR;
  for (int row = out->valid.top; row < VIPS_RECT_BOTTOM(&out->valid); ++row)
    bytes ? LumaLine<uint8_t>(in, out, row) : LumaLine<uint16_t>(in, out, row);
  return 0;
}

template <Sample T>
void ColourLine(const VipsRegion* picture, const VipsRegion* luma, VipsRegion* out, int row) {
  const VipsRect& area = out->valid;
  T* pixel = reinterpret_cast<T*>(VIPS_REGION_ADDR(out, area.left, row));
  std::copy_n(VIPS_REGION_ADDR(picture, area.left, row), VIPS_REGION_SIZEOF_LINE(out),
              reinterpret_cast<VipsPel*>(pixel));
  const auto* after = reinterpret_cast<const uint16_t*>(VIPS_REGION_ADDR(luma, area.left, row));
  for (int i = 0; i < area.width; ++i, pixel += out->im->Bands) GiveLuma(pixel, LumaOf(pixel), after[i]);
}

int ComputeColour(VipsRegion* out, void* sequence, void*, void*, gboolean*) {
  auto** in = static_cast<VipsRegion**>(sequence);
  for (int i = 0; i < 2; ++i)
    if (vips_region_prepare(in[i], &out->valid) != 0) return -1;
  const bool bytes = out->im->BandFmt == VIPS_FORMAT_UCHAR;
  for (int row = out->valid.top; row < VIPS_RECT_BOTTOM(&out->valid); ++row)
    bytes ? ColourLine<uint8_t>(in[0], in[1], out, row) : ColourLine<uint16_t>(in[0], in[1], out, row);
  return 0;
}

void Keep(VipsImage* user, const vips::VImage& used) {
  g_object_set_data_full(G_OBJECT(user), "kelvo-luma-input", g_object_ref(used.get_image()), g_object_unref);
}

// Cached, as windows of tiles overlap: each pixel is asked for five times.
vips::VImage Luma(const vips::VImage& image) {
  vips::VImage luma(vips_image_new());
  VipsImage* out = luma.get_image();
  Keep(out, image);
  if (vips_image_pipelinev(out, VIPS_DEMAND_STYLE_SMALLTILE, image.get_image(), nullptr) != 0) throw vips::VError();
  out->Bands = 1;
  out->BandFmt = VIPS_FORMAT_USHORT;
  out->Type = VIPS_INTERPRETATION_GREY16;
  if (vips_image_generate(out, vips_start_one, ComputeLuma, vips_stop_one, image.get_image(), nullptr) != 0)
    throw vips::VError();
  return InCache(luma);
}

}  // namespace

vips::VImage ProcessLuma(const vips::VImage& image, const TileTask& task) {
  const vips::VImage treated = ProcessTiles(Luma(image), 1, task);
  vips::VImage result(vips_image_new());
  VipsImage* out = result.get_image();
  if (vips_image_pipelinev(out, VIPS_DEMAND_STYLE_SMALLTILE, image.get_image(), treated.get_image(), nullptr) != 0)
    throw vips::VError();
  VipsImage** inputs = vips_allocate_input_array(out, image.get_image(), treated.get_image(), nullptr);
  if (inputs == nullptr) throw vips::VError();
  g_object_set_data_full(G_OBJECT(out), "kelvo-picture", g_object_ref(image.get_image()), g_object_unref);
  g_object_set_data_full(G_OBJECT(out), "kelvo-luma", g_object_ref(treated.get_image()), g_object_unref);
  if (vips_image_generate(out, vips_start_many, ComputeColour, vips_stop_many, inputs, nullptr) != 0)
    throw vips::VError();
  return result;
}

}  // namespace kelvo::host
