#include "analysis/width_fit.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

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

// Bounds are worked for all shifts at once, in vectors of four: lane l is shift l - 4. The last three lanes fill whole
// vectors and mean nothing.
constexpr int kVectors = 3;
constexpr int kLanes = 4 * kVectors;
using Lanes = float[kLanes];
using Floats = float __attribute__((vector_size(16)));
using Ints = int32_t __attribute__((vector_size(16)));

template <class Vector, class Number>
Vector LoadVector(const Number* from) {
  Vector v;
  std::memcpy(&v, from, sizeof v);
  return v;
}

Floats Distance(Floats v) {
  return reinterpret_cast<Floats>(reinterpret_cast<Ints>(v) & INT32_MAX);
}

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
  const LevelSamples at(width);
  const int32_t* model = EdgeModel(width);
  const int slope = ModelReach(width), reach = ComparedReach(width);
  const float flat = static_cast<float>(reach - slope), share_of_one = 1.0f / static_cast<float>(2 * reach + 1);
  for (int v = 0; v < kVectors; ++v) {
    const float* samples = sums.samples + kProfileReach - kGreatestShift + 4 * v;
    const int32_t* before = sums.before + kProfileReach - kGreatestShift + 4 * v;
    const auto sample = [samples](int i) { return LoadVector<Floats>(samples + i); };
    const auto sum = [before](int first, int end) {
      return __builtin_convertvector(LoadVector<Ints>(before + end) - LoadVector<Ints>(before + first), Floats);
    };
    const Floats step = (sample(at.far) + sample(at.near) - sample(-at.far) - sample(-at.near)) * 0.5f;
    // The levels of both sides, off by the mean residual.
    const Floats low = (sum(-reach, reach + 1) - step * static_cast<float>(reach + 1)) * share_of_one;
    const Floats high = low + step;
    Floats misfit = Distance(sum(-reach, -slope) - flat * low) + Distance(sum(slope, reach + 1) - (flat + 1) * high);
    for (int i = 0; i < slope; ++i) {
      // By symmetry the share before the edge is also what the model lacks behind it.
      const Floats part = step * (static_cast<float>(model[-1 - i]) * (1.0f / 65536.0f));
      misfit += Distance(sample(i) - high + part) + Distance(sample(-1 - i) - low - part);
    }
    const Floats bound = (misfit * share_of_one - 17.0f) * 99.99f / (Distance(step) + 2.0f);
    std::memcpy(bounds + 4 * v, &bound, sizeof bound);
  }
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
