// plain::FitWidths with the bounds of several profiles side by side, and the samples of a misfit.
#include "analysis/width_fit.h"

#include <new>

#include "analysis/width_search.h"
#include "stages/lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

struct ProfileLanes {
  using Ints = SignedVector;
  using Floats = FloatVector;
  static FloatVector ToFloats(SignedVector v) { return KELVO_TARGET::ToFloats(v); }
  static FloatVector Distance(FloatVector v) { return Magnitude(v); }
};

// As plain::Misfit; the lanes behind the last sample count nothing.
int32_t Misfit(const EdgeProfile& profile, Candidate candidate, const Levels& levels) {
  constexpr int kMost = ComparedSamples(kModelWidths - 1);
  const int reach = ComparedReach(candidate.width), count = ComparedSamples(candidate.width);
  const int32_t* samples = profile.Sample(candidate.shift - reach);
  const int32_t* model = EdgeModel(candidate.width) - reach;
  const Vector left = All(Bits(levels.left)), step = All(Bits(levels.step) << 1);
  const Vector partial = Less(LaneNumbers(), All(static_cast<uint32_t>((count - 1) % kLanes + 1)));
  const int last = (count - 1) / kLanes;
  Vector residuals[(kMost + kLanes - 1) / kLanes];
  Vector sum{};
  for (int i = 0; i <= last; ++i) {
    const Vector modelled = MulHighSigned(step, Load(model + i * kLanes) << 15);
    residuals[i] = Load(samples + i * kLanes) - left - modelled;
    if (i == last) residuals[i] &= partial;
    sum += residuals[i];
  }
  const Vector mean = All(Bits(Signed(SumOfLanes(sum)) / count));
  Vector misfit = Magnitude(residuals[last] - mean) & partial;
  for (int i = 0; i < last; ++i) misfit += Magnitude(residuals[i] - mean);
  return Signed(SumOfLanes(misfit));
}

using LaneBounds = PerShift<ProfileLanes>[kModelWidths];

// In every lane, the candidate with about the least bound that promises anything.
struct Promising {
  explicit Promising(const LaneBounds& bounds) {
    for (int width = 0; width < kModelWidths; ++width)
      for (int i = 0; i < kFitShifts; ++i) {
        // Bits of floats are ordered as the floats are, and behind them come the negative ones. The lowest make room
        // for the candidate's number.
        const Vector bits = reinterpret_cast<Vector>(bounds[width][i] - kLeastPromising);
        least = Lesser(least, ((bits >> 1) & ~255u) | static_cast<uint32_t>(width * kFitShifts + i));
      }
  }
  Candidate Of(int lane) const {
    const int number = Signed(least[lane] & 255u);
    return {number % kFitShifts - kGreatestShift, number / kFitShifts};
  }

  Vector least = All(INT32_MAX);
};
static_assert(kModelWidths * kFitShifts <= 255);

// What the fits of a group need, too much for the stack.
struct Work {
  void Read(const EdgeProfile* profiles, int count) {
    for (int lane = 0; lane < kLanes; ++lane) {
      const int32_t* samples = profiles[lane < count ? lane : 0].Sample(-kProfileReach);
      for (int i = 0; i < kProfileSamples; ++i) sums.samples[i][lane] = samples[i];
    }
    sums.SumUp();
    BoundCosts(sums, bounds);
  }
  ProfileSums<ProfileLanes> sums;
  LaneBounds bounds;
};
static_assert(sizeof(Work) + kVectorBytes <= kFitScratch * sizeof(int32_t));

// At most kLanes profiles.
void FitGroup(const EdgeProfile* profiles, int count, WidthFit* fits, Work& work) {
  work.Read(profiles, count);
  const Promising promising(work.bounds);
  WidthSearch<Misfit> searches[kLanes];
  FloatVector limits = FloatVector{} - 1e30f;  // idle lanes let nothing pass
  for (int lane = 0; lane < count; ++lane) {
    searches[lane].Begin(profiles[lane], promising.Of(lane));
    limits[lane] = searches[lane].limit();
  }
  for (int i = 0; i < kFitShifts; ++i)
    for (int width = 0; width < kModelWidths; ++width)
      for (uint32_t passed = BitsOfLanes(~Less(limits, work.bounds[width][i])); passed != 0; passed &= passed - 1) {
        const int lane = __builtin_ctz(passed);
        searches[lane].Try({i - kGreatestShift, width});
        limits[lane] = searches[lane].limit();
      }
  for (int lane = 0; lane < count; ++lane) fits[lane] = searches[lane].Best();
}

}  // namespace

void FitWidths(const EdgeProfile* profiles, int count, WidthFit* fits, int32_t* scratch) {
  const auto beyond = reinterpret_cast<uintptr_t>(scratch) % kVectorBytes;
  Work& work = *new (scratch + (kVectorBytes - beyond) / sizeof(int32_t)) Work;
  for (int i = 0; i < count; i += kLanes)
    FitGroup(profiles + i, count - i < kLanes ? count - i : kLanes, fits + i, work);
}

}  // namespace kelvo::KELVO_TARGET
