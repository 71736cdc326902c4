#include "tile_window.h"

#include <algorithm>
#include <new>

namespace kelvo::host {

std::array<int, KELVO_TILE_SIZE> MirroredPositions(int start, int size) {
  std::array<int, KELVO_TILE_SIZE> positions;
  const int64_t period = 2 * int64_t{size};
  int64_t position = int64_t{start} - KELVO_CORE_START;
  for (int& mirrored : positions) {
    const int64_t phase = (position++ % period + period) % period;
    mirrored = static_cast<int>(std::min(phase, period - 1 - phase));
  }
  return positions;
}

TileWindow::TileWindow(VipsImage* image) : region_(vips_region_new(image)) {
  if (region_ == nullptr) throw std::bad_alloc();
}

TileWindow::~TileWindow() {
  g_object_unref(region_);
}

bool TileWindow::MoveTo(int top, int left, TileRange range) {
  rows_ = MirroredPositions(top, region_->im->Ysize);
  columns_ = MirroredPositions(left, region_->im->Xsize);
  const auto ends = [range](const auto& positions) {
    return std::minmax_element(positions.begin() + range.first, positions.begin() + range.end);
  };
  const auto [first_row, last_row] = ends(rows_);
  const auto [first_column, last_column] = ends(columns_);
  source_ = {*first_column, *first_row, *last_column - *first_column + 1, *last_row - *first_row + 1};
  return vips_region_prepare(region_, &source_) == 0;
}

}  // namespace kelvo::host
