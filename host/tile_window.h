// The pixels around a tile of a picture, mirrored at the picture's borders.
#ifndef KELVO_HOST_TILE_WINDOW_H
#define KELVO_HOST_TILE_WINDOW_H

#include <array>
#include <vips/vips8>

#include "kelvo/kelvo.h"

namespace kelvo::host {

// For each of the 256 rows (or columns) of a tile, the picture row it is read from. `start` is the picture row of the
// tile's first core row, `size` (at least 1) the number of picture rows. Rows outside are mirrored at the picture's
// borders, the border row itself being repeated: -1 is row 0, -2 is row 1; small pictures are mirrored many times.
std::array<int, KELVO_TILE_SIZE> MirroredPositions(int start, int size);

// Rows, or columns, first .. end - 1 of a tile.
struct TileRange {
  int first = 0, end = KELVO_TILE_SIZE;
};

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

  // All bands of the pixel at a place of the tile.
  template <typename T>
  const T* Pixel(int tile_row, int tile_column) const {
    return reinterpret_cast<const T*>(VIPS_REGION_ADDR(region_, columns_[tile_column], rows_[tile_row]));
  }

  // Writes sample(first band of the pixel) for every cell of the tile, row by row.
  template <typename T, typename Function>
  void Fill(int32_t* cell, Function sample) const {
    for (const int row : rows_) {
      const T* samples = reinterpret_cast<const T*>(VIPS_REGION_ADDR(region_, region_->valid.left, row));
      for (const int column : columns_) *cell++ = sample(samples + (column - region_->valid.left) * bands());
    }
  }

 private:
  VipsRegion* region_;
  std::array<int, KELVO_TILE_SIZE> rows_{}, columns_{};
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILE_WINDOW_H
