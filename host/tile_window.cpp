#include "tile_window.h"

#include <algorithm>
#include <new>

namespace kelvo::host {

TileWindow::TileWindow(VipsImage* image) : region_(vips_region_new(image)) {
  if (region_ == nullptr) throw std::bad_alloc();
}

TileWindow::~TileWindow() {
  g_object_unref(region_);
}

bool TileWindow::MoveTo(int top, int left) {
  rows_ = MirroredPositions(top, region_->im->Ysize);
  columns_ = MirroredPositions(left, region_->im->Xsize);
  const auto [first_row, last_row] = std::minmax_element(rows_.begin(), rows_.end());
  const auto [first_column, last_column] = std::minmax_element(columns_.begin(), columns_.end());
  VipsRect source = {*first_column, *first_row, *last_column - *first_column + 1, *last_row - *first_row + 1};
  return vips_region_prepare(region_, &source) == 0;
}

}  // namespace kelvo::host
