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
  Worker(VipsImage* image, const Operation& operation) : operation_(operation), window_(image), heap_(NewHeap()) {}

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
      if (!Call<T>(top, left)) return false;
      Give<T>(out, band);
    }
    return true;
  }

 private:
  template <Sample T>
  void Stage(int band) {
    window_.Fill<T>(heap_.get(), [band](const T* pixel) { return DisplayOf(pixel[band]); });
  }

  template <Sample T>
  bool Call(int top, int left) {
    // A fresh block for each call: results must not depend on what was computed before.
    TileParams params = operation_.task.params;
    params.ImageWidth = window_.region()->im->Xsize;
    params.ImageHeight = window_.region()->im->Ysize;
    params.TileTop = top;
    params.TileLeft = left;
    if (operation_.task.call(params, heap_.get()) != KELVO_OK) {
      vips_error("kelvo", "tile at row %d, column %d: %s", top, left, params.Message);
      return false;
    }
    if (flat_ground_.empty()) TabulateFlatGround<T>(params);
    return true;
  }

  // 8-bit samples have a place each, others share one by their display value.
  template <Sample T>
  static int FlatGroundPlace(T sample) {
    return std::same_as<T, uint8_t> ? sample : DisplayOf(sample);
  }

  template <Sample T>
  void TabulateFlatGround(const TileParams& done) {
    const int32_t step = std::same_as<T, uint8_t> ? KELVO_LEVEL : 1;
    for (int32_t staged = 0; staged <= KELVO_DISPLAY_WHITE; staged += step)
      flat_ground_.push_back(static_cast<int16_t>(operation_.task.flat_ground(done, staged)));
  }

  // Cells outside the picture, which nobody reads, become 0.
  template <Sample T>
  void Give(VipsRegion* out, int band) const {
    const VipsRect& core = out->valid;
    const int inside = std::min(core.width, window_.region()->im->Xsize - window_.column(KELVO_CORE_START));
    for (int row = 0; row < core.height; ++row) {
      const int32_t* result = &heap_[KELVO_TILE_SIZE * (KELVO_CORE_START + row) + KELVO_CORE_START];
      auto* value = reinterpret_cast<int16_t*>(VIPS_REGION_ADDR(out, core.left, core.top + row)) + band;
      const T* original = window_.Pixel<T>(KELVO_CORE_START + row, KELVO_CORE_START) + band;
      if (operation_.task.raw_values) {
        GiveRow(value, core.width, inside, [result](int column) { return result[column]; });
      } else {
        GiveRow(value, core.width, inside, [&, bands = window_.bands()](int column) {
          return result[column] - flat_ground_[FlatGroundPlace(original[column * bands])];
        });
      }
    }
  }

  template <class Function>
  void GiveRow(int16_t* value, int width, int inside, Function value_at) const {
    const int spacing = operation_.colour_bands;
    for (int i = 0; i < inside; ++i) value[i * spacing] = static_cast<int16_t>(value_at(i));
    for (int i = inside; i < width; ++i) value[i * spacing] = 0;
  }

  const Operation& operation_;
  TileWindow window_;
  WorkHeap heap_;
  std::vector<int16_t> flat_ground_;  // by FlatGroundPlace, from the first call on
};

}  // namespace

vips::VImage ProcessTiles(const vips::VImage& image, int colour_bands, const TileTask& task) {
  const TileGrid grid = GridOver(image, task.overlap);
  const TilesShape cores = {grid.across * KELVO_CORE_SIZE, grid.down * KELVO_CORE_SIZE, colour_bands,
                            VIPS_FORMAT_SHORT};
  return Joined(image, InTiles<Worker>(image, cores, Operation{task, grid, colour_bands}), grid, task.raw_values);
}

}  // namespace kelvo::host
