#include "seams.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "errors.h"
#include "kelvo/kelvo.h"
#include "shared_pieces.h"
#include "staging.h"
#include "tile_operation.h"

namespace kelvo::host {
namespace {

constexpr int kOneShift = 7, kOne = 1 << kOneShift;  // the sum of the weights: twice the widest overlap

// A row (or column) of the picture in the cores: up to two places, of which the second counts `second_weight` of kOne.
struct Places {
  int first, second;
  int second_weight;

  bool fades() const { return second_weight != 0; }
};

Places PlacesOf(int position, int step, int count) {
  const int tile = std::min(position / step, count - 1), inside = position - tile * step;
  const int overlap = KELVO_CORE_SIZE - step, own = tile * KELVO_CORE_SIZE + inside;
  if (tile == 0 || inside >= overlap) return {own, own, 0};
  const int before = (tile - 1) * KELVO_CORE_SIZE + inside + step;
  return {before, own, (2 * inside + 1) * kOne / (2 * overlap)};
}

// Columns of a region of which either all fade, or none and they lie side by side in the cores.
struct Run {
  int start, end;
  bool fades;
};

struct Join {
  vips::VImage cores;
  TileGrid grid;
  bool own_values;
  std::unique_ptr<SharedPieces> open_cores;  // by row * across + column
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
    FindRuns();
    blended_.resize(columns_.size() * static_cast<size_t>(join_.cores.bands()));
    VipsRect from = {columns_.front().first, rows_.front().first, columns_.back().second - columns_.front().first + 1,
                     rows_.back().second - rows_.front().first + 1};
    VipsRect original = area;
    if (!ComputeCores(from)) return false;
    if (vips_region_prepare(image_, &original) != 0 || vips_region_prepare(cores_, &from) != 0) return false;
    for (int row = 0; row < area.height; ++row) JoinRow<T>(out, row);
    return true;
  }

 private:
  void Locate(std::vector<Places>& places, int start, int size, int count) const {
    places.resize(static_cast<size_t>(size));
    for (int i = 0; i < size; ++i) places[static_cast<size_t>(i)] = PlacesOf(start + i, join_.grid.step, count);
  }

  // Has the cores of an area computed. Where they overlap neighbouring areas share some, and a thread would wait for the
  // core at which another works; meanwhile it takes one that the other, or the next area, will need.
  bool ComputeCores(const VipsRect& area) {
    if (join_.grid.step == KELVO_CORE_SIZE) return true;
    const int last_row = (VIPS_RECT_BOTTOM(&area) - 1) / KELVO_CORE_SIZE;
    const int last_column = (VIPS_RECT_RIGHT(&area) - 1) / KELVO_CORE_SIZE;
    const int64_t across = join_.grid.across;
    own_cores_.clear();
    for (int row = area.top / KELVO_CORE_SIZE; row <= last_row; ++row)
      for (int column = area.left / KELVO_CORE_SIZE; column <= last_column; ++column)
        own_cores_.push_back(row * across + column);
    join_.open_cores->Want(own_cores_);
    while (const auto core = join_.open_cores->Begin(own_cores_)) {
      VipsRect place = {static_cast<int>(*core % across) * KELVO_CORE_SIZE,
                        static_cast<int>(*core / across) * KELVO_CORE_SIZE, KELVO_CORE_SIZE, KELVO_CORE_SIZE};
      const bool computed = vips_region_prepare(cores_, &place) == 0;
      join_.open_cores->End(*core);
      if (!computed) return false;
    }
    return true;
  }

  void FindRuns() {
    runs_.clear();
    for (int i = 0; i < static_cast<int>(columns_.size()); ++i) {
      const Places& place = columns_[static_cast<size_t>(i)];
      const bool follows = i > 0 && runs_.back().fades == place.fades() &&
                           (place.fades() || place.first == columns_[static_cast<size_t>(i - 1)].first + 1);
      if (!follows) runs_.push_back({i, i, place.fades()});
      runs_.back().end = i + 1;
    }
  }

  const int16_t* Core(int column, int row) const {
    return reinterpret_cast<const int16_t*>(VIPS_REGION_ADDR(cores_, column, row));
  }

  template <Sample T>
  void JoinRow(VipsRegion* out, int number) {
    const VipsRect& area = out->valid;
    const Places& row = rows_[static_cast<size_t>(number)];
    const int bands = out->im->Bands;
    for (const Run& run : runs_) {
      const int left = area.left + run.start, top = area.top + number;
      const auto* original = reinterpret_cast<const T*>(VIPS_REGION_ADDR(image_, left, top));
      auto* sample = reinterpret_cast<T*>(VIPS_REGION_ADDR(out, left, top));
      const int16_t* values = ValuesOf(run, row);
      if (join_.own_values) {
        Merge(run, bands, original, values, sample, [](T, int32_t value) { return SampleOf<T>(value); });
      } else {
        Merge(run, bands, original, values, sample, [](T before, int32_t value) { return Changed(before, value, 0); });
      }
    }
  }

  // All bands of the cores in the columns of `run`.
  const int16_t* ValuesOf(const Run& run, const Places& row) {
    const int core_bands = join_.cores.bands();
    const Places& start = columns_[static_cast<size_t>(run.start)];
    if (run.fades) {
      int16_t* value = blended_.data();
      for (int i = run.start; i < run.end; ++i, value += core_bands)
        BlendFour(columns_[static_cast<size_t>(i)], row, value);
    } else if (row.fades()) {
      BlendRows(Core(start.first, row.first), Core(start.first, row.second), row.second_weight,
                (run.end - run.start) * core_bands);
    } else {
      return Core(start.first, row.first);
    }
    return blended_.data();
  }

  // What BlendFour makes of columns that do not fade.
  void BlendRows(const int16_t* first, const int16_t* second, int second_weight, int count) {
    int16_t* value = blended_.data();
    for (int i = 0; i < count; ++i) {
      const int32_t sum = first[i] * (kOne - second_weight) + second[i] * second_weight;
      value[i] = static_cast<int16_t>((sum + kOne / 2) >> kOneShift);
    }
  }

  void BlendFour(const Places& column, const Places& row, int16_t* value) const {
    const int16_t* corners[4] = {Core(column.first, row.first), Core(column.second, row.first),
                                 Core(column.first, row.second), Core(column.second, row.second)};
    for (int band = 0; band < join_.cores.bands(); ++band) {
      const auto across = [&](int left) {
        return corners[left][band] * (kOne - column.second_weight) + corners[left + 1][band] * column.second_weight;
      };
      const int32_t sum = across(0) * (kOne - row.second_weight) + across(2) * row.second_weight;
      value[band] = static_cast<int16_t>((sum + kOne * kOne / 2) >> (2 * kOneShift));
    }
  }

  // merge(sample of the picture, value of the cores) for the bands that the cores have; the others are copied.
  template <Sample T, class Function>
  void Merge(const Run& run, int bands, const T* original, const int16_t* value, T* sample, Function merge) const {
    const int columns = run.end - run.start, core_bands = join_.cores.bands();
    if (core_bands == bands) {
      for (int i = 0; i < columns * bands; ++i) sample[i] = merge(original[i], value[i]);
      return;
    }
    for (int i = 0; i < columns; ++i, original += bands, value += core_bands, sample += bands) {
      for (int band = 0; band < core_bands; ++band) sample[band] = merge(original[band], value[band]);
      for (int band = core_bands; band < bands; ++band) sample[band] = original[band];
    }
  }

  const Join& join_;
  VipsRegion *image_, *cores_;
  std::vector<Places> rows_, columns_;
  std::vector<int64_t> own_cores_;
  std::vector<Run> runs_;         // of columns_
  std::vector<int16_t> blended_;  // values of a run
};

}  // namespace

TileGrid GridOver(const vips::VImage& image, int overlap) {
  const int step = KELVO_CORE_SIZE - overlap;
  const auto cores = [step, overlap](int size) { return std::max(1, (size - overlap + step - 1) / step); };
  return {step, cores(image.width()), cores(image.height())};
}

vips::VImage Joined(const vips::VImage& image, const vips::VImage& cores, const TileGrid& grid, bool own_values) {
  auto open_cores = std::make_unique<SharedPieces>(int64_t{grid.across} * grid.down);
  return InTiles<Joiner>(image, ShapeOf(image), Join{cores, grid, own_values, std::move(open_cores)});
}

}  // namespace kelvo::host
