// A picture that is computed in tiles of 128 x 128 where and when its pixels are asked for: what all tile operations
// share.
#ifndef KELVO_HOST_TILE_OPERATION_H
#define KELVO_HOST_TILE_OPERATION_H

#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vips/vips8>

#include "errors.h"

namespace kelvo::host {

// False with a message in the libvips error buffer once the user has asked to stop.
bool MayGoOn();

// What libvips calls to fill a picture, and what it hands to the first of them.
struct Generator {
  VipsStartFn start;
  VipsGenerateFn compute;
  VipsStopFn stop;
  void* settings;
};

// What differs between a picture and the tiles computed from it.
struct TilesShape {
  int width, height, bands;
  VipsBandFormat format;
};

inline TilesShape ShapeOf(const vips::VImage& image) {
  return {image.width(), image.height(), image.bands(), image.format()};
}

// Sets `out` up with the header of `in` but of this shape, and puts the cache behind it that asks for each tile
// once as long as the result is read in rows of tiles. Throws vips::VError.
vips::VImage TilesOf(VipsImage* out, VipsImage* in, const TilesShape& shape, const Generator& generator);

// The picture with a cache of tiles behind it: each is asked for once as long as the result is read in rows of tiles.
// Throws vips::VError.
vips::VImage InCache(const vips::VImage& image);

// libvips calls these three; no exception may leave them. A Worker is what one thread owns: made of the picture and the
// Settings, it has bool Compute<T>(VipsRegion* out), which fills the valid area of `out`, a tile of the grid, or leaves
// a message in the libvips error buffer and returns false.
template <class Worker, class Settings>
struct TileFunctions {
  static void* Start(VipsImage*, void* image, void* settings) try {
    return new Worker(static_cast<VipsImage*>(image), *static_cast<const Settings*>(settings));
  } catch (const std::bad_alloc&) {
    vips_error("kelvo", "out of memory: a thread needs a work heap of 4 MiB");
    return nullptr;
  }

  static int Stop(void* worker, void*, void*) {
    delete static_cast<Worker*>(worker);
    return 0;
  }

  template <class Sample>
  static int Compute(VipsRegion* out, void* worker, void*, void*, gboolean*) try {
    return MayGoOn() && static_cast<Worker*>(worker)->template Compute<Sample>(out) ? 0 : -1;
  } catch (const std::bad_alloc&) {
    vips_error("kelvo", "out of memory");
    return -1;
  }

  static VipsGenerateFn ComputeFor(VipsBandFormat format) {
    if (format == VIPS_FORMAT_UCHAR) return Compute<uint8_t>;
    if (format == VIPS_FORMAT_USHORT) return Compute<uint16_t>;
    throw HostError("only 8- and 16-bit pictures can be cut into tiles");
  }
};

// A picture of this shape whose tiles Workers compute from `image`. Throws vips::VError, or HostError if
// `image` has not 8 or 16 bits.
template <class Worker, class Settings>
vips::VImage InTiles(const vips::VImage& image, const TilesShape& shape, Settings settings) {
  using Functions = TileFunctions<Worker, Settings>;
  const VipsGenerateFn compute = Functions::ComputeFor(image.format());
  VipsImage* in = image.get_image();
  vips::VImage tiles(vips_image_new());
  auto owned = std::make_unique<Settings>(std::move(settings));
  void* pointer = owned.get();
  const auto destroy = [](void* kept) { delete static_cast<Settings*>(kept); };
  g_object_set_data_full(G_OBJECT(tiles.get_image()), "kelvo-settings", owned.release(), destroy);
  return TilesOf(tiles.get_image(), in, shape, {Functions::Start, compute, Functions::Stop, pointer});
}

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILE_OPERATION_H
