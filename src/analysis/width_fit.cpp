#include "analysis/width_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "analysis/edge_model.h"
#include "stages/fixed_point.h"

namespace kelvo {
namespace {

constexpr int kGreatestShift = 4;
constexpr int kMostReach = kModelWidths + 1;
constexpr double kNoCost = 1e20;

// A model laid over the profile so that its edge runs before sample `shift`.
struct Candidate {
  int shift, width;
};

// Samples -reach .. reach about the shift are compared.
constexpr int ComparedReach(int width) {
  return std::max(width + 2, 4);
}
constexpr int ComparedSamples(int width) {
  return 2 * ComparedReach(width) + 1;
}

// The level of a side is the mean of two samples beyond the blur, `near` and `far` from the shift.
struct LevelSamples {
  explicit constexpr LevelSamples(int width) : near((width + 4) / 2), far(near + near / 2) {}
  int near, far;
};

struct Levels {
  int32_t left, step;
};

Levels LevelsOf(const EdgeProfile& profile, Candidate candidate) {
  const LevelSamples at(candidate.width);
  const int shift = candidate.shift;
  const int32_t left = (profile[shift - at.far] + profile[shift - at.near]) / 2;
  const int32_t right = (profile[shift + at.far] + profile[shift + at.near]) / 2;
  return {left, right - left};
}

// Sum of the residuals' distances from their mean. Samples below 2^24, at most 57 of them: sums fit.
int32_t Misfit(const EdgeProfile& profile, Candidate candidate, const Levels& levels) {
  const int reach = ComparedReach(candidate.width), count = ComparedSamples(candidate.width);
  const int32_t* samples = &profile[candidate.shift - reach];
  const int32_t* model = EdgeModel(candidate.width) - reach;
  // (model x step) >> 16 in 32 bits: the model is at most 2^16, the low half of the step below it.
  const int32_t high = levels.step >> 16;
  const uint32_t low = Bits(levels.step) & 65535u;
  int32_t residuals[2 * kMostReach + 1];
  int32_t sum = 0;
  for (int i = 0; i < count; ++i) {
    residuals[i] = samples[i] - levels.left - (model[i] * high + Signed((Bits(model[i]) * low) >> 16));
    sum += residuals[i];
  }
  const int32_t mean = sum / count;
  int32_t misfit = 0;
  for (int i = 0; i < count; ++i) misfit += std::abs(residuals[i] - mean);
  return misfit;
}

// Percent of the step, kNoCost if there is none. Intended: the mean residual is truncated before it is scaled.
double Cost(const EdgeProfile& profile, Candidate candidate) {
  const Levels levels = LevelsOf(profile, candidate);
  if (levels.step == 0) return kNoCost;
  const int32_t mean_residual = Misfit(profile, candidate, levels) / ComparedSamples(candidate.width);
  return mean_residual * 100.0 / std::abs(levels.step);
}

// Bounds are worked for all shifts at once: lane l is shift l - 4. The last three lanes fill whole vectors and mean
// nothing.
constexpr int kLanes = 12;
using Lanes = float[kLanes];

// The profile as the bounds read it: samples, and sums of all samples before. Zeros follow for the idle lanes.
struct Sums {
  explicit Sums(const EdgeProfile& profile) {
    for (int i = 0; i <= 2 * kProfileReach; ++i) {
      const int32_t sample = profile[i - kProfileReach];
      samples[i] = static_cast<float>(sample);
      before[i + 1] = before[i] + sample;
    }
  }
  float samples[2 * kProfileReach + 1 + kLanes] = {};
  int32_t before[2 * kProfileReach + 2 + kLanes] = {};
};

// Lower bounds of Cost() for one width. Under the slope every residual's distance from the mean counts; beyond it,
// where the model is 0 or 1, the sum of a side's distances stands for the sum of their magnitudes. All but the slope
// comes from sums of samples. What single precision and truncation may lose is taken off: 17 of the mean residual, 2 of
// the step.
void BoundCosts(const Sums& sums, int width, Lanes& bounds) {
  constexpr int kFirst = kProfileReach - kGreatestShift;
  const float* samples = sums.samples + kFirst;
  const int32_t* before = sums.before + kFirst;
  const LevelSamples at(width);
  const int slope = ModelReach(width), reach = ComparedReach(width);
  const float flat = static_cast<float>(reach - slope), count = static_cast<float>(2 * reach + 1);
  Lanes step, low, high, misfit;  // low, high: the levels of both sides, off by the mean residual
  for (int l = 0; l < kLanes; ++l) {
    step[l] = (samples[l + at.far] + samples[l + at.near] - samples[l - at.far] - samples[l - at.near]) * 0.5f;
    const float all = static_cast<float>(before[l + reach + 1] - before[l - reach]);
    low[l] = (all - step[l] * static_cast<float>(reach + 1)) / count;
    high[l] = low[l] + step[l];
    const float left = static_cast<float>(before[l - slope] - before[l - reach]);
    const float right = static_cast<float>(before[l + reach + 1] - before[l + slope]);
    misfit[l] = std::fabs(left - flat * low[l]) + std::fabs(right - (flat + 1) * high[l]);
  }
  for (int i = 0; i < slope; ++i) {
    // By symmetry the share before the edge is also what the model lacks behind it.
    const float share = static_cast<float>(EdgeModel(width)[-1 - i]) / 65536.0f;
    for (int l = 0; l < kLanes; ++l) {
      const float part = share * step[l];
      misfit[l] += std::fabs(samples[l + i] - high[l] + part) + std::fabs(samples[l - 1 - i] - low[l] - part);
    }
  }
  for (int l = 0; l < kLanes; ++l) bounds[l] = (misfit[l] / count - 17.0f) * 99.99f / (std::fabs(step[l]) + 2.0f);
}

// The width with the least bound, for every lane.
void PromisingWidths(const Lanes (&bounds)[kModelWidths], int (&best)[kLanes]) {
  Lanes least;
  std::copy_n(bounds[0], kLanes, least);
  for (int width = 1; width < kModelWidths; ++width)
    for (int l = 0; l < kLanes; ++l) {
      const bool less = bounds[width][l] < least[l];
      least[l] = less ? bounds[width][l] : least[l];
      best[l] = less ? width : best[l];
    }
}

}  // namespace

std::optional<WidthFit> FitWidth(const EdgeProfile& profile) {
  const Sums sums(profile);
  Lanes bounds[kModelWidths];
  for (int width = 0; width < kModelWidths; ++width) BoundCosts(sums, width, bounds[width]);

  // One candidate of each shift first, for its cost alone: nearly all others then fall to their bound.
  int promising[kLanes] = {};
  PromisingWidths(bounds, promising);
  double limit = kNoCost;
  for (int shift = -kGreatestShift; shift <= kGreatestShift; ++shift)
    limit = std::min(limit, Cost(profile, {shift, promising[shift + kGreatestShift]}));
  double least = kNoCost;
  Candidate best{};
  for (int shift = -kGreatestShift; shift <= kGreatestShift; ++shift)
    for (int width = 0; width < kModelWidths; ++width) {
      if (bounds[width][shift + kGreatestShift] > limit) continue;
      const double cost = Cost(profile, {shift, width});
      if (cost >= least) continue;
      least = cost;
      limit = std::min(limit, cost);
      best = {shift, width};
    }
  if (least == kNoCost || std::abs(best.shift) == kGreatestShift) return std::nullopt;
  return WidthFit{best.width, LevelsOf(profile, best).step};
}

}  // namespace kelvo
