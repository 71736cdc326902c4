#include "analysis/edge_profile.h"

#include <algorithm>

#include "analysis/edge_direction.h"

namespace kelvo {
namespace {

constexpr int kSide = 5;  // the sample that tells a rising edge from a falling one

// Cells moved after i samples. The slopes between 0 and 1 are digital lines of about 14 and 34 degrees.
enum Slope { kNone, kQuarter, kTwoThirds, kFull };

constexpr int Moved(Slope slope, int i) {
  switch (slope) {
    case kNone:
      return 0;
    case kQuarter:
      return i / 4;
    case kTwoThirds:
      return i - (i + 1) / 3;
    default:
      return i;
  }
}

constexpr struct {
  Slope rows;
  int row_sign;
  Slope columns;
  double spacing;
} kLines[kEdgeDirections] = {
    {kNone, 1, kFull, 1.0},    {kQuarter, 1, kFull, 1.035},    {kTwoThirds, 1, kFull, 1.155},
    {kFull, 1, kFull, 1.414},  {kFull, 1, kTwoThirds, 1.155},  {kFull, 1, kQuarter, 1.035},
    {kFull, 1, kNone, 1.0},    {kFull, -1, kQuarter, 1.035},   {kFull, -1, kTwoThirds, 1.155},
    {kFull, -1, kFull, 1.414}, {kTwoThirds, -1, kFull, 1.155}, {kQuarter, -1, kFull, 1.035},
};

constexpr CellStep Forward(int direction, int i) {
  const auto& line = kLines[direction];
  return {line.row_sign * Moved(line.rows, i), Moved(line.columns, i)};
}

using Distances = std::array<int, kProfileReach + 1>;

constexpr std::array<Distances, kEdgeDirections> MakeDistances() {
  std::array<Distances, kEdgeDirections> distances{};
  for (int direction = 0; direction < kEdgeDirections; ++direction)
    for (int i = 0; i <= kProfileReach; ++i) {
      const CellStep step = Forward(direction, i);
      distances[static_cast<size_t>(direction)][static_cast<size_t>(i)] = CellsTo(step.row, step.column);
    }
  return distances;
}

constexpr std::array<Distances, kEdgeDirections> kDistances = MakeDistances();

// Reads samples `sign` x 1..32, none of which may turn back: kept at or above, or below, all before them.
template <class Extreme>
void ReadSide(const int32_t* point, const Distances& distances, int sign, Extreme extreme, EdgeProfile& profile) {
  int32_t running = *point;
  for (int i = 1; i <= kProfileReach; ++i) {
    running = extreme(running, point[sign * distances[static_cast<size_t>(i)]]);
    profile[sign * i] = running;
  }
}

}  // namespace

CellStep ProfileStep(int direction, int i) {
  const CellStep step = Forward(direction, i < 0 ? -i : i);
  return i < 0 ? CellStep{-step.row, -step.column} : step;
}

double SampleSpacing(int direction) {
  return kLines[direction].spacing;
}

EdgeProfile ProfileAt(const int32_t* point, int direction) {
  const Distances& distances = kDistances[static_cast<size_t>(direction)];
  const int side = distances[kSide];
  const auto greater = [](int32_t a, int32_t b) { return std::max(a, b); };
  const auto less = [](int32_t a, int32_t b) { return std::min(a, b); };
  EdgeProfile profile;
  profile[0] = *point;
  if (point[side] > point[-side]) {
    ReadSide(point, distances, 1, greater, profile);
    ReadSide(point, distances, -1, less, profile);
  } else {
    ReadSide(point, distances, 1, less, profile);
    ReadSide(point, distances, -1, greater, profile);
  }
  return profile;
}

}  // namespace kelvo
