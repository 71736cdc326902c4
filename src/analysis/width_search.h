// The search for the candidate of a fit that costs least: bounds first, then the few that they let pass.
//
// A candidate is a model of some width laid over the profile so that its edge runs before sample `shift`.
#ifndef KELVO_ANALYSIS_WIDTH_SEARCH_H
#define KELVO_ANALYSIS_WIDTH_SEARCH_H

#include <cstdint>

#include "analysis/edge_model.h"
#include "analysis/edge_profile.h"
#include "analysis/width_fit.h"
#include "stages/fixed_point.h"
#include "stages/target.h"

namespace kelvo {

inline constexpr int kGreatestShift = 4;
inline constexpr int kFitShifts = 2 * kGreatestShift + 1;
inline constexpr double kNoCost = 1e20;

// The level of a side is the mean of two samples beyond the blur, `near` and `far` from the shift.
struct LevelSamples {
  explicit constexpr LevelSamples(int width) : near((width + 4) / 2), far(near + near / 2) {}
  int near, far;
};

namespace KELVO_TARGET {

struct Candidate {
  int shift, width;
};

struct Levels {
  int32_t left, step;
};

inline Levels LevelsOf(const EdgeProfile& profile, Candidate candidate) {
  const LevelSamples at(candidate.width);
  const int32_t* middle = profile.Sample(candidate.shift);
  const int32_t left = (middle[-at.far] + middle[-at.near]) / 2;
  return {left, (middle[at.far] + middle[at.near]) / 2 - left};
}

// The search in one profile. Misfit(profile, candidate, levels) sums the distances of the residuals from their mean.
template <int32_t (*Misfit)(const EdgeProfile&, Candidate, const Levels&)>
class WidthSearch {
 public:
  // `promising` is evaluated for its cost alone: nearly all others then fall to their bound.
  void Begin(const EdgeProfile& profile, Candidate promising) {
    profile_ = &profile;
    SetLimit(Cost(promising));
  }

  // No candidate with a greater bound can win.
  float limit() const { return limit_; }

  // To be called in order, shift before width.
  void Try(Candidate candidate) {
    const double cost = Cost(candidate);
    if (cost >= least_) return;
    least_ = cost;
    best_ = candidate;
    SetLimit(cost);
  }

  WidthFit Best() const {
    if (least_ == kNoCost || best_.shift == -kGreatestShift || best_.shift == kGreatestShift) return {kNoFit, 0};
    return {best_.width, LevelsOf(*profile_, best_).step};
  }

 private:
  // Percent of the step, kNoCost if there is none. Intended: the mean residual is truncated before it is scaled.
  double Cost(Candidate candidate) const {
    const Levels levels = LevelsOf(*profile_, candidate);
    if (levels.step == 0) return kNoCost;
    const int32_t mean_residual = Misfit(*profile_, candidate, levels) / ComparedSamples(candidate.width);
    return mean_residual * 100.0 / static_cast<double>(Magnitude(Bits(levels.step)));
  }

  // Rounded up.
  void SetLimit(double cost) {
    const float above = static_cast<float>(cost) * 1.000001f;
    limit_ = above < limit_ ? above : limit_;
  }

  const EdgeProfile* profile_ = nullptr;
  double least_ = kNoCost;
  Candidate best_{};
  float limit_ = 2e20f;
};

// What follows works on one profile or on one in every lane of a vector: `Kind` gives the types Ints and Floats, and
// the functions ToFloats and Distance (from zero).

// Samples of profiles, and their sums over spans; index 0 is sample -32.
template <class Kind>
struct ProfileSums {
  using Ints = typename Kind::Ints;
  using Floats = typename Kind::Floats;

  void SumUp() {
    before[0] = Ints{};
    for (int i = 0; i < kProfileSamples; ++i) before[i + 1] = before[i] + samples[i];
    for (int length = 1; length <= kLongestPart; ++length)
      for (int i = 0; i + length <= kProfileSamples; ++i)
        spans[length - 1][i] = Kind::ToFloats(before[i + length] - before[i]);
  }
  // Indices are positions; then follow those of greater shifts.
  const Ints* Samples(int position) const { return samples + kFirst + position; }
  const Ints* Before(int position) const { return before + kFirst + position; }
  const Floats* Span(int first, int end) const { return spans[end - first - 1] + kFirst + first; }

  static constexpr int kFirst = kProfileReach - kGreatestShift;
  Ints samples[kProfileSamples];
  Ints before[kProfileSamples + 1];
  Floats spans[kLongestPart][kProfileSamples];
};

// One number for every shift.
template <class Kind>
using PerShift = typename Kind::Floats[kFitShifts];

// The modelled step, and percent per unit of it.
template <class Kind>
inline void FindSteps(const ProfileSums<Kind>& sums, int width, PerShift<Kind>& step, PerShift<Kind>& percent) {
  const LevelSamples at(width);
  const auto *left = sums.Samples(-at.near), *farther_left = sums.Samples(-at.far);
  const auto *right = sums.Samples(at.near), *farther_right = sums.Samples(at.far);
  for (int i = 0; i < kFitShifts; ++i) {
    step[i] = Kind::ToFloats(farther_right[i] + right[i] - farther_left[i] - left[i]) * 0.5f;
    percent[i] = 99.99f / (Kind::Distance(step[i]) + 2.0f);
  }
}

// Lower bounds of the costs of a width. Within a part of the model the residuals' distances from their mean are no less
// than the distance of their sum from its own. What single precision and truncation may lose is taken off: 40 of the
// mean residual, 2 of the step, a ten-thousandth of the whole.
template <class Kind>
inline void BoundWidth(const ProfileSums<Kind>& sums, int width, const PerShift<Kind>& step,
                       const PerShift<Kind>& percent, PerShift<Kind>& bounds) {
  const int reach = ComparedReach(width);
  const float share_of_one = 1.0f / static_cast<float>(2 * reach + 1), ones = static_cast<float>(reach + 1);
  const auto *first = sums.Before(-reach), *end = sums.Before(reach + 1);
  PerShift<Kind> low, high, misfit;  // the levels of the sides, off by the mean residual
  for (int i = 0; i < kFitShifts; ++i) {
    low[i] = (Kind::ToFloats(end[i] - first[i]) - step[i] * ones) * share_of_one;
    high[i] = low[i] + step[i];
    misfit[i] = typename Kind::Floats{};
  }
  const ModelParts& parts = PartsOfModel(width);
  for (int p = 0; p < parts.slopes; ++p) {
    const ModelPart part = parts.part[p];
    const auto *left = sums.Span(-part.to, -part.from), *right = sums.Span(part.from, part.to_behind);
    for (int i = 0; i < kFitShifts; ++i) {
      const auto rise = step[i] * part.rise;
      misfit[i] += Kind::Distance(left[i] - low[i] * part.cells - rise) +
                   Kind::Distance(right[i] - high[i] * part.cells_behind + rise);
    }
  }
  for (int p = parts.slopes; p < parts.count; ++p) {
    const ModelPart part = parts.part[p];
    const auto *left = sums.Span(-part.to, -part.from), *right = sums.Span(part.from, part.to_behind);
    for (int i = 0; i < kFitShifts; ++i)
      misfit[i] +=
          Kind::Distance(left[i] - low[i] * part.cells) + Kind::Distance(right[i] - high[i] * part.cells_behind);
  }
  for (int i = 0; i < kFitShifts; ++i) bounds[i] = (misfit[i] * share_of_one - 40.0f) * percent[i];
}

// Bounds of all candidates.
template <class Kind>
inline void BoundCosts(const ProfileSums<Kind>& sums, PerShift<Kind>* bounds) {
  for (int width = 0; width < kModelWidths; width += 2) {
    PerShift<Kind> step, percent;  // the same for two widths
    FindSteps(sums, width, step, percent);
    BoundWidth(sums, width, step, percent, bounds[width]);
    if (width + 1 < kModelWidths) BoundWidth(sums, width + 1, step, percent, bounds[width + 1]);
  }
}

// The least bound promises most, but for those of candidates with hardly a step.
inline constexpr float kLeastPromising = -1.0f;

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_ANALYSIS_WIDTH_SEARCH_H
