#include "analysis/blur_width.h"

#include <new>

#include "analysis/edge_direction.h"
#include "analysis/edge_profile.h"
#include "analysis/width_fit.h"
#include "analysis/width_votes.h"
#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/tone.h"

namespace kelvo {
namespace {

constexpr int kPointsInRow = KELVO_CORE_SIZE / kEdgeGrid;
constexpr int kSamplesInside = 15;  // samples either side that must lie in the image
constexpr int kGreatestWidth = 20;

void Linearise(const Tile& tile) {
  tile.params().CurveIndex = 2;
  const Region region(kProfileReach);
  for (int row = region.first; row < region.end; ++row)
    ToLinearRow(tile, tile.Row(kDisplay, row, region.first), tile.Row(kLinear, row, region.first), region.size());
}

// Where a point lies in the image. Positions wrap: nobody checks them.
struct Place {
  int32_t row, column;
};

Place PlaceOf(const TileParams& params, int row, int column) {
  return {WrapAdd(params.TileTop, row - kCoreFirst), WrapAdd(params.TileLeft, column - kCoreFirst)};
}

bool IsInside(const TileParams& params, Place place, CellStep step) {
  const int32_t row = WrapAdd(place.row, step.row), column = WrapAdd(place.column, step.column);
  return row >= 0 && row < params.ImageHeight && column >= 0 && column < params.ImageWidth;
}

bool IsInMiddleHalf(const TileParams& params, Place place) {
  const auto inside = [](int32_t position, int32_t size) {
    const int32_t quarter = size / 4;
    return quarter < position && position < size - quarter;
  };
  return inside(place.row, params.ImageHeight) && inside(place.column, params.ImageWidth);
}

// Edges whose width is to be fitted, many at a time, as the routine works on several at once. Their profiles live in
// kEdges, behind the room that the fits need.
class EdgeQueue {
 public:
  explicit EdgeQueue(const Tile& tile)
      : tile_(tile), profiles_(reinterpret_cast<EdgeProfile*>(tile.Cells(kEdges) + kFitScratch)) {}

  static constexpr int kMost = 128;

  // Adds the point if an edge of `direction` through it counts.
  void Add(int row, int column, int direction) {
    const TileParams& params = tile_.params();
    const Place place = PlaceOf(params, row, column);
    if (!IsInside(params, place, ProfileStep(direction, -kSamplesInside)) ||
        !IsInside(params, place, ProfileStep(direction, kSamplesInside)))
      return;
    new (profiles_ + count_) EdgeProfile(ProfileAt(tile_.Row(kLinear, row, column), direction));
    edges_[count_++] = {direction, IsInMiddleHalf(params, place)};
    if (count_ == kMost) Vote();
  }

  // What has been added votes.
  void Vote() {
    WidthFit fits[kMost];
    tile_.routines().fit_widths(profiles_, count_, fits, tile_.Cells(kEdges));
    for (int i = 0; i < count_; ++i)
      if (fits[i].width != kNoFit) Vote(edges_[i], fits[i]);
    count_ = 0;
  }

 private:
  struct Edge {
    int direction;
    bool counts_twice;
  };

  void Vote(const Edge& edge, const WidthFit& fit) {
    const int width = TruncToInt(fit.width * SampleSpacing(edge.direction) + 0.5);
    if (width > kGreatestWidth) return;
    const int32_t weight = VoteWeight(width, fit.step);
    int32_t& votes = tile_.params().BlurWidthVotes[width];
    votes = WrapAdd(votes, edge.counts_twice ? 2 * weight : weight);
  }

  const Tile& tile_;
  int count_ = 0;
  Edge edges_[kMost];
  EdgeProfile* profiles_;
};
static_assert(kFitScratch + sizeof(EdgeProfile) / sizeof(int32_t) * EdgeQueue::kMost <= kPlaneCells);

}  // namespace

void DetectBlurWidth(const Tile& tile) {
  Linearise(tile);
  EdgeQueue edges(tile);
  for (int row = kCoreFirst; row < kCoreEnd; row += kEdgeGrid) {
    int32_t directions[kPointsInRow];
    tile.routines().edge_directions(tile.Row(kLinear, row, kCoreFirst), directions, kPointsInRow);
    for (int i = 0; i < kPointsInRow; ++i)
      if (directions[i] != kNoEdge) edges.Add(row, kCoreFirst + i * kEdgeGrid, directions[i]);
  }
  edges.Vote();
  DecideBlurWidth(tile.params());
}

}  // namespace kelvo
