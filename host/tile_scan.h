// Going over the tiles of a picture to measure it.
#ifndef KELVO_HOST_TILE_SCAN_H
#define KELVO_HOST_TILE_SCAN_H

#include <memory>
#include <new>
#include <vips/vips8>

#include "kelvo/kelvo.h"
#include "progress.h"
#include "tile_operation.h"

namespace kelvo::host {

// libvips calls these three; no exception may leave them. A Worker is what one thread owns: made of the Job, which
// outlives it, it has bool Measure(int top, int left) for the tile whose core starts there, which returns false with a
// message in the libvips error buffer, and void HandIn(), which adds what it has found to the Job.
template <class Worker, class Job>
struct ScanFunctions {
  static void* Start(VipsImage*, void* job, void*) try {
    return new Worker(*static_cast<Job*>(job));
  } catch (const std::bad_alloc&) {
    vips_error("kelvo", "out of memory: a thread needs a work heap of 4 MiB");
    return nullptr;
  }

  static int Measure(VipsRegion* place, void* worker, void*, void*, gboolean*) try {
    return MayGoOn() && static_cast<Worker*>(worker)->Measure(place->valid.top, place->valid.left) ? 0 : -1;
  } catch (const std::bad_alloc&) {
    vips_error("kelvo", "out of memory");
    return -1;
  }

  static int Stop(void* worker, void*, void*) try {
    const std::unique_ptr<Worker> owned(static_cast<Worker*>(worker));
    owned->HandIn();
    return 0;
  } catch (const std::bad_alloc&) {
    vips_error("kelvo", "out of memory");
    return -1;
  }
};

// Has Workers measure every tile of `image`, on as many threads as libvips uses. Throws vips::VError, also when the user
// stops it.
template <class Worker, class Job>
void ScanTiles(const vips::VImage& image, Job& job, bool show_progress) {
  using Functions = ScanFunctions<Worker, Job>;
  // An empty picture of the same size hands out the places of the tiles.
  const vips::VImage places = vips::VImage::black(image.width(), image.height());
  const Progress progress(places, "measuring", show_progress);
  if (vips_sink_tile(places.get_image(), KELVO_CORE_SIZE, KELVO_CORE_SIZE, Functions::Start, Functions::Measure,
                     Functions::Stop, &job, nullptr) != 0)
    throw vips::VError();
}

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILE_SCAN_H
