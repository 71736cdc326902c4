#include "tile_operation.h"

#include "interrupt.h"
#include "kelvo/kelvo.h"

namespace kelvo::host {
namespace {

// Enough tiles for what a writer may hold: its two buffers, one tile per thread, a row for readers that lag behind, and
// two for tiles that overlap the rows asked for.
int CachedTiles(VipsImage* image) {
  int tile_width, tile_height, lines;
  vips_get_tile_size(image, &tile_width, &tile_height, &lines);
  const int across = (image->Xsize + KELVO_CORE_SIZE - 1) / KELVO_CORE_SIZE;
  const int down = (lines + KELVO_CORE_SIZE - 1) / KELVO_CORE_SIZE;
  return across * (2 * down + 3) + vips_concurrency_get();
}

}  // namespace

bool MayGoOn() {
  if (!StopRequested()) return true;
  vips_error("kelvo", "interrupted");
  return false;
}

vips::VImage TilesOf(VipsImage* out, VipsImage* in, const TilesShape& shape, const Generator& generator) {
  // The tile operation reads `in` for as long as it lives.
  g_object_set_data_full(G_OBJECT(out), "kelvo-input", g_object_ref(in), g_object_unref);
  if (vips_image_pipelinev(out, VIPS_DEMAND_STYLE_SMALLTILE, in, nullptr) != 0) throw vips::VError();
  out->Xsize = shape.width;
  out->Ysize = shape.height;
  out->Bands = shape.bands;
  out->BandFmt = shape.format;
  if (vips_image_generate(out, generator.start, generator.compute, generator.stop, in, generator.settings) != 0)
    throw vips::VError();
  g_object_ref(out);  // taken over by the next line
  return InCache(vips::VImage(out));
}

vips::VImage InCache(const vips::VImage& image) {
  return image.tilecache(vips::VImage::option()
                             ->set("tile_width", int{KELVO_CORE_SIZE})
                             ->set("tile_height", int{KELVO_CORE_SIZE})
                             ->set("max_tiles", CachedTiles(image.get_image()))
                             ->set("access", VIPS_ACCESS_RANDOM)
                             ->set("threaded", true));
}

}  // namespace kelvo::host
