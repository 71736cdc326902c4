#include "noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <numbers>
#include <vector>

#include "staging.h"
#include "tile_scan.h"
#include "tile_window.h"

namespace kelvo::host {
namespace {

constexpr int kSquare = 16;
constexpr int kNearBlack = 2, kNearWhite = 253;  // levels at which noise may be cut off

constexpr int kFirst = KELVO_CORE_START, kSize = KELVO_CORE_SIZE;  // rows and columns of a tile that are measured

// By square: the sum of what the Laplacians leave, in samples. At most 256 times 8 times white.
struct Squares {
  std::vector<uint32_t> whole, clipped;  // clipped: with a pixel near black or white
};

void Append(std::vector<uint32_t>& squares, const std::vector<uint32_t>& more) {
  squares.insert(squares.end(), more.begin(), more.end());
}

struct Job {
  VipsImage* image;
  std::mutex mutex;
  std::vector<Squares> bands;  // colour; of the workers that have ended
};

// Pixels of a picture that are measured, of `there` from the start of a tile on. The last square is filled up with what
// the last row or column leaves, if half of it is there; else it is left out.
struct Extent {
  explicit Extent(int there)
      : squares(std::min(kSize, there + kSquare / 2) / kSquare), pixels(std::min(there, squares * kSquare)) {}
  int squares, pixels;
};

// What one thread owns. Arrays go over the columns of a tile, one band at a time.
class Worker {
 public:
  explicit Worker(Job& job) : job_(job), window_(job.image), bands_(job.bands.size()) {}

  bool Measure(int top, int left) {
    if (!window_.MoveTo(top, left, {kFirst - 1, kFirst + kSize + 1})) return false;
    const Extent down(job_.image->Ysize - top), across(job_.image->Xsize - left);
    if (down.squares == 0 || across.squares == 0) return true;
    for (size_t band = 0; band < bands_.size(); ++band) {
      if (job_.image->BandFmt == VIPS_FORMAT_UCHAR) {
        MeasureBand<uint8_t>(static_cast<int>(band), down, across);
      } else {
        MeasureBand<uint16_t>(static_cast<int>(band), down, across);
      }
    }
    return true;
  }

  void HandIn() const {
    const std::lock_guard<std::mutex> lock(job_.mutex);
    for (size_t band = 0; band < bands_.size(); ++band) {
      Append(job_.bands[band].whole, bands_[band].whole);
      Append(job_.bands[band].clipped, bands_[band].clipped);
    }
  }

 private:
  struct Row {
    std::array<int32_t, kSize> samples, bends;  // bends: second differences along the row
  };

  template <Sample T>
  void MeasureBand(int band, const Extent& down, const Extent& across) {
    constexpr int kScale = std::same_as<T, uint8_t> ? 1 : 257;
    Load<T>(rows_[2], band, -1, across);
    Load<T>(rows_[0], band, 0, across);
    for (int row = 0; row < down.pixels; ++row) {
      if (row % kSquare == 0) Clear();
      Load<T>(rows_[(row + 1) % 3], band, row + 1, across);
      const int times = row + 1 == down.pixels ? 1 + down.squares * kSquare - down.pixels : 1;
      Add(rows_[(row + 2) % 3], rows_[row % 3], rows_[(row + 1) % 3], across, times, kScale);
      if (row % kSquare == kSquare - 1 || row + 1 == down.pixels) Close(bands_[static_cast<size_t>(band)], across);
    }
  }

  // `row` -1 and kSize are those beside the tile.
  template <Sample T>
  void Load(Row& loaded, int band, int row, const Extent& across) {
    std::array<int32_t, kSize + 2> line;
    line[0] = window_.Pixel<T>(kFirst + row, kFirst - 1)[band];
    line[across.pixels + 1] = window_.Pixel<T>(kFirst + row, kFirst + across.pixels)[band];
    const T* samples = window_.Pixel<T>(kFirst + row, kFirst) + band;
    WithSpacing(window_.bands(), [&](auto spacing) {
      for (int i = 0; i < across.pixels; ++i) line[i + 1] = samples[i * spacing];
    });
    for (int i = 0; i < across.pixels; ++i) loaded.bends[i] = line[i] - 2 * line[i + 1] + line[i + 2];
    std::copy_n(line.data() + 1, across.pixels, loaded.samples.data());
  }

  void Clear() {
    left_.fill(0);
    margins_.fill(0);
  }

  void Add(const Row& above, const Row& row, const Row& below, const Extent& across, int times, int scale) {
    const int32_t darkest = kNearBlack * scale + 1, brightest = kNearWhite * scale - 1;
    for (int i = 0; i < across.pixels; ++i) {
      left_[i] += static_cast<uint32_t>(times * std::abs(above.bends[i] - 2 * row.bends[i] + below.bends[i]));
      margins_[i] |= (row.samples[i] - darkest) | (brightest - row.samples[i]);
    }
  }

  // Hands out a row of squares.
  void Close(Squares& squares, const Extent& across) {
    const int end = across.squares * kSquare;
    std::fill(left_.begin() + across.pixels, left_.begin() + end, left_[across.pixels - 1]);
    for (int start = 0; start < end; start += kSquare) {
      uint32_t sum = 0;
      int32_t margin = 0;
      for (int i = start; i < start + kSquare; ++i) {
        sum += left_[i];
        margin |= margins_[i];
      }
      (margin < 0 ? squares.clipped : squares.whole).push_back(sum);
    }
  }

  Job& job_;
  TileWindow window_;
  std::vector<Squares> bands_;
  std::array<Row, 3> rows_;             // by row % 3
  std::array<uint32_t, kSize> left_;    // sums over the rows of a square
  std::array<int32_t, kSize> margins_;  // negative where a pixel is near black or white
};

uint32_t TenthPercentile(std::vector<uint32_t>& values) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 10);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

}  // namespace

double NoiseOf(const vips::VImage& image, int colour_bands, bool show_progress) {
  if (image.width() < kSquare || image.height() < kSquare) return 0.0;
  Job job{image.get_image(), {}, std::vector<Squares>(static_cast<size_t>(colour_bands))};
  ScanTiles<Worker>(image, job, show_progress);
  double sum = 0.0;
  for (Squares& squares : job.bands) sum += TenthPercentile(squares.whole.empty() ? squares.clipped : squares.whole);
  const double samples = sum / colour_bands / (kSquare * kSquare);
  // The mask multiplies the deviation by 6, the sum of its squares being 36; a normal deviate is sqrt(2 / pi) of it in
  // the mean.
  return samples / (image.format() == VIPS_FORMAT_USHORT ? 257.0 : 1.0) / 6.0 * std::sqrt(std::numbers::pi / 2.0);
}

int NoiseLevel(double sigma, int jpeg) {
  // Between the noises that the levels are made for (stages/fit_plan.cpp), and measured: at narrow widths noise of 3
  // levels needs the highest, at wide ones it costs a tenth of a dB.
  constexpr std::array<double, 4> kLimits = {0.38, 0.75, 1.5, 2.4};
  return static_cast<int>(std::lower_bound(kLimits.begin(), kLimits.end(), jpeg < 10 ? sigma : 4 * sigma) -
                          kLimits.begin()) -
         1;
}

}  // namespace kelvo::host
