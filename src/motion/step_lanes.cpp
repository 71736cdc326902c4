// The search of plain::StepRow for neighbouring cells at once, one in each lane of a vector.
#include <algorithm>

#include "motion/step_sweep.h"
#include "stages/lanes.h"

namespace kelvo::lanes {
namespace {

// The cells `cell`, `cell + 1`, .. of a sweep under search. Every lane is a StepTrial; the loads are contiguous.
template <class V>
class StepLanes {
 public:
  static constexpr int kWidth = kCount<V>;

  StepLanes(const StepSweep& sweep, int cell) : sweep_(sweep), model_(*sweep.model), cell_(cell) {
    for (int i = 0; i < kWidth; ++i) {
      previous_[i] = LowHalf(sweep.codes[cell + i]);
      unit_[i] = UnitOf(sweep, previous_[i]);
      first_sign_[i] = Bits(FirstSign(sweep, previous_[i]));
    }
    for (int i = 0; i < model_.taps.count; ++i) values_[i] = Load<V>(sweep.estimate + cell + Tap(i).cell);
    SetUnits();
    ReadSide(model_.rising, risen_);
    ReadSide(model_.falling, fallen_);
    rising_weight_ = DataWeights(model_.rising.pixel);
    falling_weight_ = DataWeights(model_.falling.pixel);
  }

  // The best moves in units: SearchMove in every lane.
  V Search() {
    const V unmoved = CostOf(V{});
    V sign = first_sign_;
    V cost = CostOf(sign);
    V moving = Less(cost, unmoved);
    if (Any(~moving)) moving |= Turn(~moving, unmoved, sign, cost);
    V units = sign & moving;
    if (!Any(moving)) return units;
    const V step = Double(moving, sign, cost, units);
    Halve(step & moving, sign, cost, units);
    return units;
  }

  // Codes the moves of lanes skip .. kWidth - 1.
  void Store(V units, int skip) const {
    for (int i = skip; i < kWidth; ++i) {
      int32_t& code = sweep_.codes[cell_ + i];
      code = WithLowHalf(code, CodeMove(sweep_, previous_[i], Signed(units[i])));
    }
  }

 private:
  const OperatorTap& Tap(int i) const { return model_.taps.taps[static_cast<size_t>(i)]; }

  // In the lanes that the first sign did not help, the other one; returns those that it does. They halve their unit.
  V Turn(V lanes, V unmoved, V& sign, V& cost) {
    const V other = CostOf(V{} - sign);
    const V turned = lanes & Less(other, unmoved);
    sign = Select(turned, V{} - sign, sign);
    cost = Select(turned, other, cost);
    if (HalvesOnReversal(sweep_) && Any(turned)) {
      for (int i = 0; i < kWidth; ++i)
        if (turned[i] != 0) unit_[i] >>= 1;
      SetUnits();
      cost = Select(turned, CostOf(sign), cost);
    }
    return turned;
  }

  // Doubles in the lanes where that pays; returns the last step that did, 1 if none.
  V Double(V running, V sign, V& cost, V& units) const {
    V last = All<V>(1);
    for (int j = 1; j <= kMaxDoublings && Any(running); ++j) {
      const V candidate = units + (sign << j), next = CostOf(candidate);
      running &= Less(next, cost);
      cost = Select(running, next, cost);
      units = Select(running, candidate, units);
      last = Select(running, All<V>(1u << j), last);
    }
    return last;
  }

  // From `step` units down: each size forward, half the size back where that fails, and forward again. A lane whose
  // step is 0 is done.
  void Halve(V step, V sign, V& cost, V& units) const {
    V back{};
    while (Any(reinterpret_cast<V>(step != 0))) {
      const V direction = Negative(sign ^ back);
      const V candidate = units + ((step ^ direction) - direction), next = CostOf(candidate);
      const V better = Less(next, cost) & reinterpret_cast<V>(step != 0);
      cost = Select(better, next, cost);
      units = Select(better, candidate, units);
      sign = Select(better & back, V{} - sign, sign);
      step = Select(~back | better, step >> 1, step);
      back = ~back & ~better;
    }
  }

  void SetUnits() {
    for (int i = 0; i < model_.taps.count; ++i)
      for (int lane = 0; lane < kWidth; ++lane)
        amounts_[i][lane] = Bits(Tap(i).sign) * Bits(TapAmount(Tap(i), unit_[lane]));
  }

  void ReadSide(const StepSide& side, V* residuals) const {
    for (int i = 0; i < side.count; ++i) {
      const int cell = cell_ + side.cells[static_cast<size_t>(i)];
      residuals[i] = Load<V>(sweep_.blurred + cell) - Load<V>(sweep_.observed + cell);
    }
  }

  V DataWeights(int pixel) const {
    V weights{};
    for (int i = 0; i < kWidth; ++i) weights[i] = DataWeight(sweep_.blurred, sweep_.observed[cell_ + i + pixel] >> 16);
    return weights;
  }

  // Cells of one amount share its product.
  static V Misfit(const StepSide& side, const V* residuals, V scaled) {
    V misfit{};
    int i = 0;
    for (int run = 0; run < side.run_count; ++run) {
      const V step = scaled * Bits(side.runs[static_cast<size_t>(run)].amount);
      for (const int end = side.runs[static_cast<size_t>(run)].end; i < end; ++i)
        misfit += Magnitude(residuals[i] + step);
    }
    return misfit;
  }

  V RoughnessWeights(V value, int tap) const {
    V below = ShiftRightArithmetic(value - Load<V>(sweep_.floor + cell_ + Tap(tap).cell), 1);
    below &= Negative(below);
    const V index = Clamp(ShiftRightArithmetic(value + below, 16), kFirstSmoothness, kLastSmoothness);
    return Gather(SmoothnessTable(sweep_.blurred), index);
  }

  V Roughness(V scaled) const {
    V values[OperatorTaps::kMax], rough[OperatorTaps::kMax];
    for (int i = 0; i < model_.taps.count; ++i) {
      values[i] = values_[i] + amounts_[i] * scaled;
      rough[i] = V{};
      const MovedCell& moved = model_.moved[static_cast<size_t>(i)];
      for (size_t k = 0; k < static_cast<size_t>(moved.count); ++k)
        rough[i] += Magnitude(values[i] - Load<V>(sweep_.estimate + cell_ + moved.neighbours[k]));
    }
    for (size_t k = 0; k < static_cast<size_t>(model_.touching_count); ++k) {
      const TouchingCells pair = model_.touching[k];
      const V half = Magnitude(values[pair.first] - values[pair.second]) >> 1;
      rough[pair.first] += half;
      rough[pair.second] += half;
    }
    V cost{};
    for (int i = 0; i < model_.taps.count; ++i) cost += MulHigh(RoughnessWeights(values[i], i), rough[i]);
    return cost;
  }

  V CostOf(V units) const {
    const V scaled = units << sweep_.scale_shift;
    return MulHigh(rising_weight_, Misfit(model_.rising, risen_, scaled)) +
           MulHigh(falling_weight_, Misfit(model_.falling, fallen_, V{} - scaled)) + Roughness(scaled);
  }

  const StepSweep& sweep_;
  const StepModel& model_;
  int cell_;
  int32_t previous_[kWidth], unit_[kWidth];
  V first_sign_{};
  V amounts_[OperatorTaps::kMax];
  V values_[OperatorTaps::kMax];
  V rising_weight_, falling_weight_;
  V risen_[StepSide::kMax], fallen_[StepSide::kMax];
};

}  // namespace

// The last vector overlaps the one before it and keeps that one's codes.
void StepRow(const StepSweep& sweep, int first, int count) {
  constexpr int kWidth = kCount<Vector4>;
  if (count < kWidth) return plain::StepRow(sweep, first, count);
  for (int done = 0; done < count; done += kWidth) {
    const int at = std::min(done, count - kWidth);
    StepLanes<Vector4> lanes(sweep, first + at);
    lanes.Store(lanes.Search(), done - at);
  }
}

}  // namespace kelvo::lanes
