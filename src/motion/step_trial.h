// One cell of a motion under search: what its step would change, read from the planes once, and the cost of candidates.
#ifndef KELVO_MOTION_STEP_TRIAL_H
#define KELVO_MOTION_STEP_TRIAL_H

#include <cstdint>

#include "motion/step_sweep.h"

namespace kelvo {

// A Trial of SearchMove. After n units in all, every moved cell has changed by n times its tap's amount of one unit,
// shifted by ScaleShift, and every blurred cell by n times its amount, likewise: the state is n alone. All sums wrap.
class StepTrial {
 public:
  // Reads the cell `cell` of the planes; `unit` in linear units.
  StepTrial(const StepSweep& sweep, int cell, int32_t unit) : sweep_(sweep), model_(*sweep.model), cell_(cell) {
    for (int i = 0; i < model_.taps.count; ++i) values_[i] = Bits(sweep.estimate[cell + Tap(i).cell]);
    SetUnit(unit);
    ReadSide(model_.rising, risen_);
    ReadSide(model_.falling, fallen_);
    rising_weight_ = DataWeight(sweep.blurred, sweep.observed[cell + model_.rising.pixel] >> 16);
    falling_weight_ = DataWeight(sweep.blurred, sweep.observed[cell + model_.falling.pixel] >> 16);
  }

  uint32_t Cost() const { return CostOf(units_); }
  uint32_t Cost(int sign, int j) const { return CostOf(units_ + sign * (1 << j)); }
  void Accept(int sign, int j) { units_ += sign * (1 << j); }
  void HalveUnit() { SetUnit(unit_ >> 1); }
  void Finish(int) const {}  // every move is taken back

 private:
  const OperatorTap& Tap(int i) const { return model_.taps.taps[static_cast<size_t>(i)]; }

  void SetUnit(int32_t unit) {
    unit_ = unit;
    for (int i = 0; i < model_.taps.count; ++i) amounts_[i] = Bits(Tap(i).sign) * Bits(TapAmount(Tap(i), unit));
  }

  // Blurred minus observed; padding counts nothing.
  void ReadSide(const StepSide& side, uint32_t* residuals) const {
    const int32_t *blurred = sweep_.blurred + cell_, *observed = sweep_.observed + cell_;
    for (int i = 0; i < side.padded; ++i) {
      const int cell = side.cells[static_cast<size_t>(i)];
      residuals[i] = i < side.count ? Bits(blurred[cell]) - Bits(observed[cell]) : 0;
    }
  }

  static uint32_t Misfit(const StepSide& side, const uint32_t* residuals, uint32_t scaled) {
    uint32_t misfit = 0;
    for (int i = 0; i < side.padded; ++i)
      // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): ReadSide has filled as many
      misfit += Magnitude(residuals[i] + Bits(side.amounts[static_cast<size_t>(i)]) * scaled);
    return misfit;
  }

  // Every moved cell's roughness by the weight of its trial value. Two moved cells see their difference from both ends,
  // and so it counts half.
  uint32_t Roughness(uint32_t scaled) const {
    uint32_t values[OperatorTaps::kMax], rough[OperatorTaps::kMax];
    for (int i = 0; i < model_.taps.count; ++i) {
      values[i] = values_[i] + amounts_[i] * scaled;
      rough[i] = 0;
      const MovedCell& moved = model_.moved[static_cast<size_t>(i)];
      for (size_t k = 0; k < static_cast<size_t>(moved.count); ++k)
        rough[i] += Magnitude(values[i] - Bits(sweep_.estimate[cell_ + moved.neighbours[k]]));
    }
    for (size_t k = 0; k < static_cast<size_t>(model_.touching_count); ++k) {
      const TouchingCells pair = model_.touching[k];
      const uint32_t half = Magnitude(values[pair.first] - values[pair.second]) >> 1;
      rough[pair.first] += half;
      rough[pair.second] += half;
    }
    uint32_t cost = 0;
    for (int i = 0; i < model_.taps.count; ++i)
      cost += MulHighUnsigned(RoughnessWeight(sweep_, values[i], sweep_.floor[cell_ + Tap(i).cell]), rough[i]);
    return cost;
  }

  uint32_t CostOf(int units) const {
    const uint32_t scaled = Bits(units) << sweep_.scale_shift;
    return MulHighUnsigned(rising_weight_, Misfit(model_.rising, risen_, scaled)) +
           MulHighUnsigned(falling_weight_, Misfit(model_.falling, fallen_, 0 - scaled)) + Roughness(scaled);
  }

  const StepSweep& sweep_;
  const StepModel& model_;
  int cell_;
  int units_ = 0;
  int32_t unit_;
  uint32_t amounts_[OperatorTaps::kMax];  // of one unit, signed
  uint32_t values_[OperatorTaps::kMax];
  uint32_t rising_weight_, falling_weight_;
  uint32_t risen_[StepSide::kMax], fallen_[StepSide::kMax];
};

}  // namespace kelvo

#endif  // KELVO_MOTION_STEP_TRIAL_H
