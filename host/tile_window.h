// The pixels around a tile of a picture, mirrored at the picture's borders.
#ifndef KELVO_HOST_TILE_WINDOW_H
#define KELVO_HOST_TILE_WINDOW_H

#include <array>
#include <memory>
#include <type_traits>
#include <vips/vips8>

#include "kelvo/kelvo.h"

namespace kelvo::host {

// For each of the 256 rows (or columns) of a tile, the picture row it is read from. `start` is the picture row of the
// tile's first core row, `size` (at least 1) the number of picture rows. Rows outside are mirrored at the picture's
// borders, the border row itself being repeated: -1 is row 0, -2 is row 1; small pictures are mirrored many times.
std::array<int, KELVO_TILE_SIZE> MirroredPositions(int start, int size);

// The work heap of one thread. Not zeroed: the library does not care what it held.
using WorkHeap = std::unique_ptr<int32_t[]>;
inline WorkHeap NewHeap() {
  return std::make_unique_for_overwrite<int32_t[]>(KELVO_HEAP_WORDS);
}

// Rows, or columns, first .. end - 1 of a tile.
struct TileRange {
  int first = 0, end = KELVO_TILE_SIZE;
};

// Calls function(samples from pixel to pixel), known to the compiler where it is common.
template <typename Function>
void WithSpacing(int bands, Function function) {
  switch (bands) {
    case 1:
      return function(std::integral_constant<int, 1>());
    case 3:
      return function(std::integral_constant<int, 3>());
    default:
      return function(bands);
  }
}

// One thread's view of a picture. All bands have the type that the caller names T, uint8_t or uint16_t.
class TileWindow {
 public:
  // `image` must allow access in any order and outlive the window. Throws std::bad_alloc.
  explicit TileWindow(VipsImage* image);
  TileWindow(const TileWindow&) = delete;
  TileWindow& operator=(const TileWindow&) = delete;
  ~TileWindow();

  // Evaluates the pixels of the tile whose core starts at this row and column, those in `range` of both. False with a
  // message in the libvips error buffer.
  bool MoveTo(int top, int left, TileRange range = {});

  int bands() const { return region_->im->Bands; }
  VipsRegion* region() const { return region_; }

  // The picture column that a column of the tile shows.
  int column(int tile_column) const { return columns_[tile_column]; }

  // All bands of the pixel at a place of the tile.
  template <typename T>
  const T* Pixel(int tile_row, int tile_column) const {
    return reinterpret_cast<const T*>(VIPS_REGION_ADDR(region_, columns_[tile_column], rows_[tile_row]));
  }

  // Writes sample(first band of the pixel) for every cell of the tile, row by row. The whole tile must be in range.
  template <typename T, typename Function>
  void Fill(int32_t* cell, Function sample) const {
    WithSpacing(bands(), [&](auto spacing) { FillSpaced<T>(cell, sample, spacing); });
  }

 private:
  // Each pixel of a row is converted once, side by side so that the compiler makes vectors, and then mirrored.
  template <typename T, typename Function, typename Spacing>
  void FillSpaced(int32_t* cell, Function sample, Spacing spacing) const {
    const int left = source_.left;
    const bool mirrored = columns_.back() - columns_.front() != KELVO_TILE_SIZE - 1;
    std::array<int32_t, KELVO_TILE_SIZE> line;
    for (const int row : rows_) {
      const T* samples = reinterpret_cast<const T*>(VIPS_REGION_ADDR(region_, left, row));
      int32_t* values = mirrored ? line.data() : cell;
      for (int i = 0; i < source_.width; ++i) values[i] = sample(samples + i * spacing);
      if (mirrored)
        for (int i = 0; i < KELVO_TILE_SIZE; ++i) cell[i] = line[columns_[i] - left];
      cell += KELVO_TILE_SIZE;
    }
  }

  VipsRegion* region_;
  VipsRect source_{};  // the pixels asked for; the region may hold more
  std::array<int, KELVO_TILE_SIZE> rows_{}, columns_{};
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILE_WINDOW_H
