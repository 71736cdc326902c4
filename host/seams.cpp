#include "seams.h"

#include <algorithm>
#include <new>
#include <vector>

#include "errors.h"
#include "kelvo/kelvo.h"
#include "staging.h"
#include "tile_operation.h"

namespace kelvo::host {
namespace {

constexpr int kOneShift = 7, kOne = 1 << kOneShift;  // the sum of the weights: twice the widest overlap

// A row (or column) of the picture in the cores: up to two places, of which the second counts `second` of kOne.
struct Places {
  int first, second;
  int second_weight;
};

Places PlacesOf(int position, int step, int count) {
  const int tile = std::min(position / step, count - 1), inside = position - tile * step;
  const int overlap = KELVO_CORE_SIZE - step, own = tile * KELVO_CORE_SIZE + inside;
  if (tile == 0 || inside >= overlap) return {own, own, 0};
  const int before = (tile - 1) * KELVO_CORE_SIZE + inside + step;
  return {before, own, (2 * inside + 1) * kOne / (2 * overlap)};
}

struct Join {
  vips::VImage cores;
  TileGrid grid;
  bool own_values;
};

// What one thread owns: its views of the picture and of the cores.
class Joiner {
 public:
  Joiner(VipsImage* image, const Join& join)
      : join_(join), image_(vips_region_new(image)), cores_(vips_region_new(join.cores.get_image())) {
    if (image_ == nullptr || cores_ == nullptr) throw std::bad_alloc();
  }
  Joiner(const Joiner&) = delete;
  Joiner& operator=(const Joiner&) = delete;
  ~Joiner() {
    if (image_ != nullptr) g_object_unref(image_);
    if (cores_ != nullptr) g_object_unref(cores_);
  }

  template <Sample T>
  bool Compute(VipsRegion* out) {
    const VipsRect area = out->valid;
    Locate(rows_, area.top, area.height, join_.grid.down);
    Locate(columns_, area.left, area.width, join_.grid.across);
    VipsRect from = {columns_.front().first, rows_.front().first, columns_.back().second - columns_.front().first + 1,
                     rows_.back().second - rows_.front().first + 1};
    VipsRect original = area;
    if (vips_region_prepare(image_, &original) != 0 || vips_region_prepare(cores_, &from) != 0) return false;
    for (int row = 0; row < area.height; ++row) JoinRow<T>(out, row);
    return true;
  }

 private:
  void Locate(std::vector<Places>& places, int start, int size, int count) const {
    places.resize(static_cast<size_t>(size));
    for (int i = 0; i < size; ++i) places[static_cast<size_t>(i)] = PlacesOf(start + i, join_.grid.step, count);
  }

  const int16_t* Core(int column, int row) const {
    return reinterpret_cast<const int16_t*>(VIPS_REGION_ADDR(cores_, column, row));
  }

  template <Sample T>
  void JoinRow(VipsRegion* out, int number) {
    const VipsRect& area = out->valid;
    const Places& row = rows_[static_cast<size_t>(number)];
    const int bands = out->im->Bands, core_bands = join_.cores.bands();
    const auto* original = reinterpret_cast<const T*>(VIPS_REGION_ADDR(image_, area.left, area.top + number));
    auto* sample = reinterpret_cast<T*>(VIPS_REGION_ADDR(out, area.left, area.top + number));
    for (const Places& column : columns_) {
      const int16_t* corners[4] = {Core(column.first, row.first), Core(column.second, row.first),
                                   Core(column.first, row.second), Core(column.second, row.second)};
      for (int band = 0; band < core_bands; ++band) {
        const auto across = [&](int left) {
          return corners[left][band] * (kOne - column.second_weight) + corners[left + 1][band] * column.second_weight;
        };
        const int32_t sum = across(0) * (kOne - row.second_weight) + across(2) * row.second_weight;
        const int32_t value = (sum + kOne * kOne / 2) >> (2 * kOneShift);
        sample[band] = join_.own_values ? SampleOf<T>(value) : Changed(original[band], value, 0);
      }
      for (int band = core_bands; band < bands; ++band) sample[band] = original[band];
      original += bands;
      sample += bands;
    }
  }

  const Join& join_;
  VipsRegion *image_, *cores_;
  std::vector<Places> rows_, columns_;
};

}  // namespace

TileGrid GridOver(const vips::VImage& image, int overlap) {
  const int step = KELVO_CORE_SIZE - overlap;
  const auto cores = [step, overlap](int size) { return std::max(1, (size - overlap + step - 1) / step); };
  return {step, cores(image.width()), cores(image.height())};
}

vips::VImage Joined(const vips::VImage& image, const vips::VImage& cores, const TileGrid& grid, bool own_values) {
  return InTiles<Joiner>(image, ShapeOf(image), Join{cores, grid, own_values});
}

}  // namespace kelvo::host
