#include "analysis/blur_width.h"

#include "analysis/edge_direction.h"
#include "analysis/edge_profile.h"
#include "analysis/width_fit.h"
#include "analysis/width_votes.h"
#include "stages/fixed_point.h"
#include "stages/tone.h"

namespace kelvo {
namespace {

constexpr int kGrid = 4;
constexpr int kSamplesInside = 15;  // samples either side that must lie in the image
constexpr int kGreatestWidth = 20;

void Linearise(const Tile& tile) {
  tile.params().CurveIndex = 2;
  const int32_t* display = tile.Cells(kDisplay);
  int32_t* linear = tile.Cells(kLinear);
  ToLinearRow(tile, display, linear, kPlaneCells);
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

void ExaminePoint(const Tile& tile, int row, int column) {
  TileParams& params = tile.params();
  const int32_t* point = tile.Row(kLinear, row, column);
  const int direction = EdgeDirection(point);
  if (direction == kNoEdge) return;
  const Place place = PlaceOf(params, row, column);
  if (!IsInside(params, place, ProfileStep(direction, -kSamplesInside)) ||
      !IsInside(params, place, ProfileStep(direction, kSamplesInside)))
    return;
  const auto fit = FitWidth(ProfileAt(point, direction));
  if (!fit) return;
  const int width = TruncToInt(fit->width * SampleSpacing(direction) + 0.5);
  if (width > kGreatestWidth) return;
  const int32_t weight = VoteWeight(width, fit->step);
  int32_t& votes = params.BlurWidthVotes[width];
  votes = WrapAdd(votes, IsInMiddleHalf(params, place) ? 2 * weight : weight);
}

}  // namespace

void DetectBlurWidth(const Tile& tile) {
  Linearise(tile);
  for (int row = kCoreFirst; row < kCoreEnd; row += kGrid)
    for (int column = kCoreFirst; column < kCoreEnd; column += kGrid) ExaminePoint(tile, row, column);
  DecideBlurWidth(tile.params());
}

}  // namespace kelvo
