#include "enlarging.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cpu_level.h"
#include "enlarge/enlarge.h"
#include "errors.h"
#include "staging.h"
#include "tile_operation.h"
#include "tile_window.h"
#include "tiling.h"
#include "weighted_colour.h"
#include "xmp_size.h"

namespace kelvo::host {
namespace {

// Rows and columns of a tile: the source of its core, and what that depends on.
constexpr int kSourceFirst = KELVO_CORE_START + KELVO_CORE_SIZE / 4;
constexpr int kContextFirst = kSourceFirst - 3;
constexpr int kContextEnd = kSourceFirst + KELVO_CORE_SIZE / 2 + 3;

struct Bands {
  int colour_bands;
};

// What one thread owns: its view of the picture and a heap. The library runs without its pre-filter, which takes nine
// tenths of the export's time and adds nothing to the result.
class Worker {
 public:
  Worker(VipsImage* image, const Bands& bands)
      : bands_(bands), window_(image), heap_(NewHeap()), alpha_changes_(kCorePixels) {}

  template <Sample T>
  bool Compute(VipsRegion* out) {
    if (!window_.MoveTo(CoreStart(out->valid.top), CoreStart(out->valid.left), {kContextFirst, kContextEnd}))
      return false;
    const int bands = window_.bands();
    const bool has_alpha = bands == bands_.colour_bands + 1;
    if (has_alpha) EnlargeAlpha<T>(out, bands - 1);
    for (int band = 0; band < (has_alpha ? bands - 1 : bands); ++band) {
      if (has_alpha)
        EnlargeWeighted<T>(out, band);
      else
        EnlargePlain<T>(out, band);
    }
    return true;
  }

 private:
  static constexpr int kCorePixels = KELVO_CORE_SIZE * KELVO_CORE_SIZE;

  // Where the core of the tile starts whose middle the output tile at `start` stems from.
  static int CoreStart(int start) { return start / 2 - (kSourceFirst - KELVO_CORE_START); }

  // Stages what `display` makes of a pixel, and runs the library.
  template <Sample T, class Display>
  void Run(Display display) {
    TileParams params{};
    const Tile tile(params, heap_.get(), ChosenRoutines());
    for (int row = kContextFirst; row < kContextEnd; ++row)
      for (int column = kContextFirst; column < kContextEnd; ++column)
        tile.At(kDisplay, row, column) = display(window_.Pixel<T>(row, column));
    EnlargeCentre(tile);
  }

  // merge(sample of the output, its source pixel, the library's result, number of the output pixel in the tile)
  template <Sample T, class Merge>
  void ForCore(VipsRegion* out, int band, Merge merge) {
    const VipsRect& core = out->valid;
    for (int row = 0; row < core.height; ++row) {
      T* sample = reinterpret_cast<T*>(VIPS_REGION_ADDR(out, core.left, core.top + row)) + band;
      const int32_t* result = &heap_[KELVO_TILE_SIZE * (KELVO_CORE_START + row) + KELVO_CORE_START];
      for (int column = 0; column < core.width; ++column, sample += out->im->Bands)
        merge(*sample, window_.Pixel<T>(kSourceFirst + row / 2, kSourceFirst + column / 2), result[column],
              KELVO_CORE_SIZE * row + column);
    }
  }

  template <Sample T>
  void EnlargePlain(VipsRegion* out, int band) {
    Run<T>([band](const T* pixel) { return DisplayOf(pixel[band]); });
    ForCore<T>(out, band, [band](T& sample, const T* pixel, int32_t result, int) {
      sample = Changed(pixel[band], result, DisplayOf(pixel[band]));
    });
  }

  // Keeps the changes for EnlargeWeighted.
  template <Sample T>
  void EnlargeAlpha(VipsRegion* out, int band) {
    EnlargePlain<T>(out, band);
    ForCore<T>(out, band, [this, band](T&, const T* pixel, int32_t result, int number) {
      alpha_changes_[number] = result - DisplayOf(pixel[band]);
    });
  }

  template <Sample T>
  void EnlargeWeighted(VipsRegion* out, int band) {
    const int alpha = bands_.colour_bands;
    Run<T>([=](const T* pixel) { return WeightedDisplay(pixel[band], pixel[alpha]); });
    ForCore<T>(out, band, [=, this](T& sample, const T* pixel, int32_t result, int number) {
      const int32_t change = result - WeightedDisplay(pixel[band], pixel[alpha]);
      sample = UnweightedColour(pixel[band], pixel[alpha], change, alpha_changes_[number]);
    });
  }

  const Bands& bands_;
  TileWindow window_;
  WorkHeap heap_;
  std::vector<int32_t> alpha_changes_;  // display values, by output pixel of the tile
};

void RequireRoom(const vips::VImage& image) {
  constexpr int kMost = VIPS_MAX_COORD / 2;
  if (image.width() <= kMost && image.height() <= kMost) return;
  throw HostError("its size is " + std::to_string(image.width()) + " x " + std::to_string(image.height()) +
                  " pixels; enlarged it may have at most " + std::to_string(kMost * 2) + " columns and rows");
}

TilesShape TwiceAsLarge(const vips::VImage& image) {
  return {2 * image.width(), 2 * image.height(), image.bands(), image.format()};
}

void DoubleXmpSize(const vips::VImage& enlarged, int width, int height) {
  if (enlarged.get_typeof(VIPS_META_XMP_NAME) != VIPS_TYPE_BLOB) return;
  size_t bytes = 0;
  const void* packet = enlarged.get_blob(VIPS_META_XMP_NAME, &bytes);
  const std::string doubled = WithDoubledSize({static_cast<const char*>(packet), bytes}, width, height);
  vips_image_set_blob_copy(enlarged.get_image(), VIPS_META_XMP_NAME, doubled.data(), doubled.size());
}

}  // namespace

vips::VImage EnlargePicture(const vips::VImage& image, int colour_bands) {
  RequireRoom(image);
  const vips::VImage enlarged = InTiles<Worker>(image, TwiceAsLarge(image), Bands{colour_bands});
  vips::VImage described =
      enlarged.copy(vips::VImage::option()->set("xres", 2 * image.xres())->set("yres", 2 * image.yres()));
  DoubleXmpSize(described, image.width(), image.height());
  // The height of one page; a writer would cut the picture into pages by it.
  if (image.get_typeof(VIPS_META_PAGE_HEIGHT) != 0) described.set(VIPS_META_PAGE_HEIGHT, described.height());
  return described;
}

}  // namespace kelvo::host
