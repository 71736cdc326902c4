#include "tiling.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <vector>

#include "seams.h"
#include "staging.h"
#include "tile_operation.h"
#include "tile_window.h"

namespace kelvo::host {
namespace {

// What the tile operation needs as long as its image lives.
struct Operation {
  TileTask task;
  TileGrid grid;
  int colour_bands;
};

// What one thread owns: its view of the picture, a block and a heap. Its results are the cores of tiles, side by side,
// as display values: the change against flat ground, or the library's own value.
class Worker {
 public:
  Worker(VipsImage* image, const Operation& operation)
      : operation_(operation), window_(image), heap_(KELVO_HEAP_WORDS) {}

  // Computes the core that is the valid area of `out`. False with a message in the libvips error buffer.
  template <Sample T>
  bool Compute(VipsRegion* out) {
    const VipsRect& core = out->valid;
    assert(core.top % KELVO_CORE_SIZE == 0 && core.left % KELVO_CORE_SIZE == 0);  // the tile cache asks so
    const int step = operation_.grid.step;
    const int top = core.top / KELVO_CORE_SIZE * step, left = core.left / KELVO_CORE_SIZE * step;
    if (!window_.MoveTo(top, left)) return false;
    for (int band = 0; band < operation_.colour_bands; ++band) {
      Stage<T>(band);
      if (!Call(top, left)) return false;
      Give<T>(out, band);
    }
    return true;
  }

 private:
  template <Sample T>
  void Stage(int band) {
    window_.Fill<T>(heap_.data(), [band](const T* pixel) { return DisplayOf(pixel[band]); });
  }

  bool Call(int top, int left) {
    // A fresh block for each call: results must not depend on what was computed before.
    TileParams params = operation_.task.params;
    params.ImageWidth = window_.region()->im->Xsize;
    params.ImageHeight = window_.region()->im->Ysize;
    params.TileTop = top;
    params.TileLeft = left;
    if (operation_.task.call(params, heap_.data()) != KELVO_OK) {
      vips_error("kelvo", "tile at row %d, column %d: %s", top, left, params.Message);
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
  void Give(VipsRegion* out, int band) const {
    const VipsRect& core = out->valid;
    for (int row = 0; row < core.height; ++row) {
      const int32_t* result = &heap_[KELVO_TILE_SIZE * (KELVO_CORE_START + row) + KELVO_CORE_START];
      auto* value = reinterpret_cast<int16_t*>(VIPS_REGION_ADDR(out, core.left, core.top + row)) + band;
      for (int column = 0; column < core.width; ++column, value += operation_.colour_bands) {
        const T original = window_.Pixel<T>(KELVO_CORE_START + row, KELVO_CORE_START + column)[band];
        const int32_t flat = operation_.task.raw_values ? 0 : flat_ground_[DisplayOf(original)];
        *value = static_cast<int16_t>(result[column] - flat);
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
  const TileGrid grid = GridOver(image, task.overlap);
  const TilesShape cores = {grid.across * KELVO_CORE_SIZE, grid.down * KELVO_CORE_SIZE, colour_bands,
                            VIPS_FORMAT_SHORT};
  return Joined(image, InTiles<Worker>(image, cores, Operation{task, grid, colour_bands}), grid, task.raw_values);
}

}  // namespace kelvo::host
