#include "stages/schedule.h"

#include <algorithm>

#include "stages/fixed_point.h"
#include "stages/pass_tables.h"

namespace kelvo {
namespace {

const KindTable& TableOf(const TileParams& params) {
  return IsMotion(params) ? kMotionTable : kRoundTable;
}

// Low accuracy takes iterations away, first from pass 2, and always leaves pass 1 one of them. High accuracy adds none:
// it works through refinement and the diagonal pairs.
void TrimIterations(TileParams& params, int accuracy) {
  for (int trims = std::min(3, std::max(0, 1 - accuracy)); trims > 0; --trims) {
    if (params.ExtraIterations >= 1)
      --params.ExtraIterations;
    else if (params.IterationCount > 1)
      --params.IterationCount;
  }
}

void SetShortcut(TileParams& params, int width, int accuracy) {
  params.ShortcutMode = 0;
  if (IsMotion(params) || width < 1 || width > 6) return;
  params.ShortcutMode = kShortcuts[accuracy + 2][width - 1];
  if (params.ShortcutMode != 0) params.IterationCount = 3 - params.ShortcutMode;
}

uint32_t PairFlags(int width, int accuracy) {
  const bool diagonals = width >= 6 || (width >= 2 && accuracy == 2);
  return kAxisPairs | (diagonals ? kDiagonalPairs : 0);
}

// Refinements = (base - Iteration) x factor; base by Accuracy -2..2, 0 for none.
struct RefineRow {
  int last_width;
  int base[5];
  int factor;
};

// clang-format off
constexpr RefineRow kRefine[] = {
    //       Accuracy -2 -1  0  1  2
    { 3, {0, 0, 0, 2, 3}, 1},
    { 6, {0, 0, 2, 3, 4}, 1},
    { 7, {0, 2, 3, 4, 5}, 1},
    {10, {0, 2, 2, 3, 5}, 2},  // Intended: 3 at Accuracy 1, and no doubling at Accuracy -1
    {20, {0, 2, 3, 4, 5}, 2},
};
// clang-format on

}  // namespace

int32_t JpegLevel(int32_t compression) {
  return std::min(compression / 10, 6);
}

void SetUpSchedule(TileParams& params) {
  const int width = BlurWidth(params);
  const int accuracy = Clamp(params.Accuracy, -2, 2);
  const KindTable& table = TableOf(params);
  params.CurveIndex = 2;
  params.ModelFlags = IsMotion(params) ? 0 : PairFlags(width, accuracy);
  params.IterationCount = table.passes[0].iterations[width];
  params.ExtraIterations = table.passes[1].iterations[width];
  TrimIterations(params, accuracy);
  SetShortcut(params, width, accuracy);
  params.JPGLevel = JpegLevel(params.JPGCompression);
  params.NoiseFloor = table.noise_floor[width];
}

// Every product and quotient is rounded to single precision, in this order.
void SetUpPass(TileParams& params, int pass, int scale_shift) {
  const int width = BlurWidth(params);
  const KindTable& kind = TableOf(params);
  const PassTable& table = kind.passes[pass - 1];
  params.Pass = pass;
  params.ScaleShift = scale_shift;
  params.GainA = 1.0f;
  params.GainB = 1.0f;
  params.GradientScale = static_cast<float>(table.gradient[width]) * 64.0f;
  const uint32_t all_pairs = kAxisPairs | kDiagonalPairs;
  if (!IsMotion(params) && (params.ModelFlags & all_pairs) == all_pairs) params.GradientScale *= 0.5f;
  params.StepDivisor = table.divisor[width];

  float strength = static_cast<float>(static_cast<double>(table.strength[width]) / 2560.0);
  strength = kWidthFactor[width] * strength;
  if (params.RemoveNoise < 0) strength = strength / kind.noise_factor[width];
  for (int level = 0; level < params.RemoveNoise; ++level) strength = strength * kind.noise_factor[width];
  if (params.BlurSpec == 4) {  // Intended: round width 4 alone leans on smoothness at high accuracy
    if (params.Accuracy == 2) strength = strength * 2.0f;
    if (params.Accuracy == 1) strength = strength * 1.4f;
  }
  params.Strength = strength;
}

void SetUpIteration(TileParams& params, int iteration) {
  params.Iteration = iteration;
  params.Step = 40000 / params.StepDivisor / iteration;
  params.HalfStep = params.Step >> 1;
}

int RefineCount(const TileParams& params) {
  if (params.ShortcutMode == 2) return 0;
  const int width = BlurWidth(params);
  const RefineRow* row = kRefine;
  while (row->last_width < width) ++row;
  const bool single = width <= 10 && params.Accuracy == -1;
  return (row->base[params.Accuracy + 2] - params.Iteration) * (single ? 1 : row->factor);
}

}  // namespace kelvo
