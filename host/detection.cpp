#include "detection.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <numeric>

#include "analysis/jpeg_grid.h"
#include "analysis/width_votes.h"
#include "api/calls.h"
#include "cpu_level.h"
#include "errors.h"
#include "staging.h"
#include "tile_scan.h"
#include "tile_window.h"

namespace kelvo::host {
namespace {

// Luma of 8-bit RGB is a whole number of display values: the weights 0.299, 0.587, 0.114 in units of 1/128.
constexpr int kRed = 38, kGreen = 75, kBlue = 15;
static_assert(kRed + kGreen + kBlue == KELVO_LEVEL);

// Sums of 16 phases and of 5 votes must fit 32 bits.
constexpr int64_t kGreatestSum = int64_t{1} << 26;

constexpr int kShownWidths = 3;

// What a measurement works on; outlives all workers.
struct Job {
  VipsImage* image;
  int colour_bands;
  Wanted wanted;
  std::mutex mutex;
  DetectionSums sums;  // of the workers that have ended
};

// What one thread owns.
class Worker {
 public:
  explicit Worker(Job& job) : job_(job), window_(job.image), heap_(NewHeap()) {}

  bool Measure(int top, int left) {
    if (!window_.MoveTo(top, left)) return false;
    if (job_.image->BandFmt == VIPS_FORMAT_UCHAR) {
      Stage<uint8_t>();
    } else {
      Stage<uint16_t>();
    }
    TileParams params{};
    params.StructureSize = sizeof params;
    params.ImageWidth = job_.image->Xsize;
    params.ImageHeight = job_.image->Ysize;
    params.TileTop = top;
    params.TileLeft = left;
    if (job_.wanted.width) Call(Operation::kDetectBlurWidth, params, heap_.get(), ChosenRoutines());
    if (job_.wanted.grid) Call(Operation::kDetectJpegGrid, params, heap_.get(), ChosenRoutines());
    sums_.Add(params);
    return true;
  }

  void HandIn() const {
    const std::lock_guard<std::mutex> lock(job_.mutex);
    job_.sums.Add(sums_);
  }

 private:
  template <Sample T>
  void Stage() {
    if (job_.colour_bands < 3) {
      window_.Fill<T>(heap_.get(), [](const T* pixel) { return DisplayOf(pixel[0]); });
      return;
    }
    window_.Fill<T>(heap_.get(), [](const T* pixel) {
      return (kRed * DisplayOf(pixel[0]) + kGreen * DisplayOf(pixel[1]) + kBlue * DisplayOf(pixel[2])) >> 7;
    });
  }

  Job& job_;
  TileWindow window_;
  WorkHeap heap_;
  DetectionSums sums_;
};

// How often the sums must be halved to fit a block.
int HalvingsFor(const DetectionSums& sums) {
  int64_t greatest = 0;
  for (const int64_t sum : sums.votes) greatest = std::max(greatest, std::abs(sum));
  for (const int64_t sum : sums.column_steps) greatest = std::max(greatest, std::abs(sum));
  for (const int64_t sum : sums.row_steps) greatest = std::max(greatest, std::abs(sum));
  int halvings = 0;
  while (greatest >> halvings > kGreatestSum) ++halvings;
  return halvings;
}

template <size_t kCount>
void Add(std::array<int64_t, kCount>& sums, const int32_t (&block)[kCount]) {
  std::transform(sums.begin(), sums.end(), block, sums.begin(), std::plus<>());
}

template <size_t kCount>
void Add(std::array<int64_t, kCount>& sums, const std::array<int64_t, kCount>& other) {
  std::transform(sums.begin(), sums.end(), other.begin(), sums.begin(), std::plus<>());
}

template <size_t kCount>
void Shrink(const std::array<int64_t, kCount>& sums, int halvings, int32_t (&block)[kCount]) {
  for (size_t i = 0; i < kCount; ++i) block[i] = static_cast<int32_t>(sums[i] >> halvings);
}

}  // namespace

void DetectionSums::Add(const TileParams& block) {
  host::Add(votes, block.BlurWidthVotes);
  host::Add(column_steps, block.JPGColumnPhaseSums);
  host::Add(row_steps, block.JPGRowPhaseSums);
  tiles += block.JPGTileCount;
}

void DetectionSums::Add(const DetectionSums& other) {
  host::Add(votes, other.votes);
  host::Add(column_steps, other.column_steps);
  host::Add(row_steps, other.row_steps);
  tiles += other.tiles;
}

bool Detection::HasEdges() const {
  return std::any_of(votes.begin(), votes.end(), [](int64_t sum) { return sum != 0; });
}

std::string Detection::Votes() const {
  const int64_t total = std::accumulate(smoothed_votes.begin(), smoothed_votes.end(), int64_t{0});
  if (total <= 0) return "none";
  std::array<int, kVotedWidths> order;
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [this](int a, int b) { return smoothed_votes[a] > smoothed_votes[b]; });
  std::string text;
  for (int i = 0; i < kShownWidths && smoothed_votes[order[i]] > 0; ++i) {
    const int64_t percent = (100 * smoothed_votes[order[i]] + total / 2) / total;
    text += (i == 0 ? "" : ", ") + std::to_string(order[i]) + " " + std::to_string(percent) + "%";
  }
  return text;
}

Detection Decide(const DetectionSums& sums) {
  const int halvings = HalvingsFor(sums);
  TileParams params{};
  Shrink(sums.votes, halvings, params.BlurWidthVotes);
  Shrink(sums.column_steps, halvings, params.JPGColumnPhaseSums);
  Shrink(sums.row_steps, halvings, params.JPGRowPhaseSums);
  DecideBlurWidth(params);
  DecideJpegGrid(params);
  Detection detection;
  detection.width = params.DetectedBlurWidth;
  detection.votes = sums.votes;
  for (int k = 0; k < kVotedWidths; ++k)
    detection.smoothed_votes[k] = int64_t{params.SmoothedBlurWidthVotes[k]} << halvings;
  detection.jpeg = params.JPGCompression;
  detection.column_phase = params.JPGHorizontalOffset;
  detection.row_phase = params.JPGVerticalOffset;
  return detection;
}

DetectionSums Measure(const vips::VImage& image, int colour_bands, Wanted wanted, bool show_progress) {
  if (image.format() != VIPS_FORMAT_UCHAR && image.format() != VIPS_FORMAT_USHORT)
    throw HostError("only 8- and 16-bit pictures can be cut into tiles");
  Job job{image.get_image(), colour_bands, wanted, {}, {}};
  ScanTiles<Worker>(image, job, show_progress);
  return job.sums;
}

}  // namespace kelvo::host
