#include "analysis/width_fit.h"

#include <cmath>
#include <cstdlib>

#include "analysis/width_search.h"

namespace kelvo::plain {
namespace {

struct OneProfile {
  using Ints = int32_t;
  using Floats = float;
  static float ToFloats(int32_t value) { return static_cast<float>(value); }
  static float Distance(float value) { return std::fabs(value); }
};

// Samples below 2^24, at most 57 of them: sums fit.
int32_t Misfit(const EdgeProfile& profile, Candidate candidate, const Levels& levels) {
  constexpr int kMost = ComparedSamples(kModelWidths - 1);
  const int reach = ComparedReach(candidate.width), count = ComparedSamples(candidate.width);
  const int32_t* samples = profile.Sample(candidate.shift - reach);
  const int32_t* model = EdgeModel(candidate.width) - reach;
  // (model x step) >> 16 in 32 bits: the model is at most 2^16, the low half of the step below it.
  const int32_t high = levels.step >> 16;
  const uint32_t low = Bits(levels.step) & 65535u;
  int32_t residuals[kMost];
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

WidthFit FitWidth(const EdgeProfile& profile) {
  ProfileSums<OneProfile> sums;
  for (int i = 0; i < kProfileSamples; ++i) sums.samples[i] = profile[i - kProfileReach];
  sums.SumUp();
  PerShift<OneProfile> bounds[kModelWidths];
  BoundCosts(sums, bounds);

  Candidate promising{};
  float least = 1e30f;
  for (int width = 0; width < kModelWidths; ++width)
    for (int i = 0; i < kFitShifts; ++i) {
      if (bounds[width][i] <= kLeastPromising || bounds[width][i] >= least) continue;
      least = bounds[width][i];
      promising = {i - kGreatestShift, width};
    }
  WidthSearch<Misfit> search;
  search.Begin(profile, promising);
  for (int i = 0; i < kFitShifts; ++i)
    for (int width = 0; width < kModelWidths; ++width)
      if (bounds[width][i] <= search.limit()) search.Try({i - kGreatestShift, width});
  return search.Best();
}

}  // namespace

void FitWidths(const EdgeProfile* profiles, int count, WidthFit* fits, int32_t*) {
  for (int i = 0; i < count; ++i) fits[i] = FitWidth(profiles[i]);
}

}  // namespace kelvo::plain
