#include "tiling.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <vector>

#include "staging.h"
#include "tile_operation.h"
#include "tile_window.h"

namespace kelvo::host {
namespace {

// What the tile operation needs as long as its image lives.
struct Operation {
  TileTask task;
  int colour_bands;
};

// What one thread owns: its view of the picture, a block and a heap.
class Worker {
 public:
  Worker(VipsImage* image, const Operation& operation)
      : operation_(operation), window_(image), heap_(KELVO_HEAP_WORDS) {}

  // Computes the tile whose core covers the valid area of `out`. False with a message in the libvips error buffer.
  template <Sample T>
  bool Compute(VipsRegion* out) {
    const VipsRect core = out->valid;
    assert(core.top % KELVO_CORE_SIZE == 0 && core.left % KELVO_CORE_SIZE == 0);  // the tile cache asks so
    if (!window_.MoveTo(core.top, core.left)) return false;
    CopyCore(out);
    for (int band = 0; band < operation_.colour_bands; ++band) {
      Stage<T>(band);
      if (!Call(core)) return false;
      Merge<T>(out, band);
    }
    return true;
  }

 private:
  // All bands as they are, so that the ones the task does not touch are already right.
  void CopyCore(VipsRegion* out) const {
    const VipsRect& core = out->valid;
    for (int row = core.top; row < core.top + core.height; ++row) {
      std::copy_n(VIPS_REGION_ADDR(window_.region(), core.left, row), VIPS_REGION_SIZEOF_LINE(out),
                  VIPS_REGION_ADDR(out, core.left, row));
    }
  }

  template <Sample T>
  void Stage(int band) {
    window_.Fill<T>(heap_.data(), [band](const T* pixel) { return DisplayOf(pixel[band]); });
  }

  bool Call(const VipsRect& core) {
    // A fresh block for each call: results must not depend on what was computed before.
    TileParams params = operation_.task.params;
    params.TileTop = core.top;
    params.TileLeft = core.left;
    if (operation_.task.call(params, heap_.data()) != KELVO_OK) {
      vips_error("kelvo", "tile at row %d, column %d: %s", core.top, core.left, params.Message);
      return false;
    }
    if (flat_ground_.empty()) TabulateFlatGround(params);
    return true;
  }

  void TabulateFlatGround(const TileParams& done) {
    for (int32_t staged = 0; staged <= KELVO_DISPLAY_WHITE; ++staged) {
      flat_ground_.push_back(operation_.task.flat_ground(done, staged));
    }
  }

  template <Sample T>
  T Merged(T original, int32_t result) const {
    if (operation_.task.raw_values) return SampleOf<T>(result);
    return Changed(original, result, flat_ground_[DisplayOf(original)]);
  }

  template <Sample T>
  void Merge(VipsRegion* out, int band) const {
    const int bands = out->im->Bands;
    const VipsRect& core = out->valid;
    for (int row = 0; row < core.height; ++row) {
      const int32_t* result = &heap_[KELVO_TILE_SIZE * (KELVO_CORE_START + row) + KELVO_CORE_START];
      T* sample = reinterpret_cast<T*>(VIPS_REGION_ADDR(out, core.left, core.top + row)) + band;
      for (int column = 0; column < core.width; ++column, sample += bands) {
        *sample = Merged(*sample, result[column]);
      }
    }
  }

  const Operation& operation_;
  TileWindow window_;
  std::vector<int32_t> heap_;
  std::vector<int32_t> flat_ground_;  // by staged value, from the first call on
};

}  // namespace

vips::VImage ProcessTiles(const vips::VImage& image, int colour_bands, const TileTask& task) {
  return InTiles<Worker>(image, 1, Operation{task, colour_bands});
}

}  // namespace kelvo::host
