// One pair under search: its cells, read from the planes once, and the cost of candidate steps.
#ifndef KELVO_ROUND_PAIR_TRIAL_H
#define KELVO_ROUND_PAIR_TRIAL_H

#include <cstdint>

#include "round/pair_sweep.h"
#include "stages/fixed_point.h"

namespace kelvo {

// A Trial of SearchMove. A step of sign x 2^j units adds unit << (ScaleShift + j) to b, takes it from a, and changes
// the blurred cells by their amounts << (ScaleShift + j), whatever the unit is. All sums wrap.
class PairTrial {
 public:
  // Reads the pair at `cell` of the planes; `unit` in linear units.
  PairTrial(const PairSweep& sweep, int cell, int32_t unit)
      : sweep_(sweep), model_(*sweep.model), cell_(cell), unit_(unit) {
    const int32_t *estimate = sweep.estimate + cell, *observed = sweep.observed + cell, *floor = sweep.floor + cell;
    a_ = Bits(estimate[model_.a]);
    b_ = Bits(estimate[model_.b]);
    floor_a_ = floor[model_.a];
    floor_b_ = floor[model_.b];
    data_weight_a_ = DataWeight(sweep.blurred, observed[model_.a] >> 16);
    data_weight_b_ = DataWeight(sweep.blurred, observed[model_.b] >> 16);
    for (int i = 0; i < PairModel::kNeighbours; ++i) {
      neighbours_a_[i] = Bits(estimate[model_.neighbours_a[static_cast<size_t>(i)]]);
      neighbours_b_[i] = Bits(estimate[model_.neighbours_b[static_cast<size_t>(i)]]);
    }
    ReadSide(model_.cells_a, residual_a_);
    ReadSide(model_.cells_b, residual_b_);
  }

  uint32_t Cost() const {
    uint32_t misfit_a = 0, misfit_b = 0;
    for (int i = 0; i < model_.padded; ++i) {
      misfit_a += Magnitude(residual_a_[i]);
      misfit_b += Magnitude(residual_b_[i]);
    }
    return Weighed(misfit_a, misfit_b, a_, b_);
  }

  uint32_t Cost(int sign, int j) const {
    const int shift = sweep_.scale_shift + j;
    const uint32_t flip = sign < 0 ? ~0u : 0u;
    uint32_t misfit_a = 0, misfit_b = 0;
    for (int i = 0; i < model_.padded; ++i) {
      const uint32_t step = Step(i, shift, flip);
      misfit_a += Magnitude(residual_a_[i] - step);
      misfit_b += Magnitude(residual_b_[i] + step);
    }
    const uint32_t move = Move(shift, flip);
    return Weighed(misfit_a, misfit_b, a_ - move, b_ + move);
  }

  void Accept(int sign, int j) {
    const int shift = sweep_.scale_shift + j;
    const uint32_t flip = sign < 0 ? ~0u : 0u;
    for (int i = 0; i < model_.padded; ++i) {
      const uint32_t step = Step(i, shift, flip);
      residual_a_[i] -= step;
      residual_b_[i] += step;
    }
    const uint32_t move = Move(shift, flip);
    a_ -= move;
    b_ += move;
    spread_ += ShiftRight(move, model_.spread_shift);
  }

  void HalveUnit() { unit_ >>= 1; }

  // Leaves a move of `units` in all in the planes, unless moves are undone.
  void Finish(int units) const {
    if (units == 0 || sweep_.undo) return;
    int32_t *estimate = sweep_.estimate + cell_, *blurred = sweep_.blurred + cell_;
    Spread(model_, estimate, Signed(spread_));
    for (size_t i = 0; i < static_cast<size_t>(model_.side); ++i) {
      const uint32_t change = Bits(model_.amounts[i]) * (Bits(units) << sweep_.scale_shift);
      int32_t &fallen = blurred[model_.cells_a[i]], &risen = blurred[model_.cells_b[i]];
      fallen = Signed(Bits(fallen) - change);
      risen = Signed(Bits(risen) + change);
    }
  }

 private:
  using Cells = std::array<int16_t, PairModel::kMaxSide>;

  // Blurred minus observed; padding counts nothing.
  void ReadSide(const Cells& cells, uint32_t* residuals) const {
    const int32_t *blurred = sweep_.blurred + cell_, *observed = sweep_.observed + cell_;
    for (int i = 0; i < model_.side; ++i) {
      const int cell = cells[static_cast<size_t>(i)];
      residuals[i] = Bits(blurred[cell]) - Bits(observed[cell]);
    }
    for (int i = model_.side; i < model_.padded; ++i) residuals[i] = 0;
  }

  uint32_t Step(int i, int shift, uint32_t flip) const {
    return ((Bits(model_.amounts[static_cast<size_t>(i)]) << shift) ^ flip) - flip;
  }

  uint32_t Move(int shift, uint32_t flip) const { return ((Bits(unit_) << shift) ^ flip) - flip; }

  // The cost: each side's misfit by the weight of its pixel, each pixel's roughness by that of its trial value. The
  // pair's own difference is seen from both ends and so counts half.
  uint32_t Weighed(uint32_t misfit_a, uint32_t misfit_b, uint32_t a, uint32_t b) const {
    uint32_t rough_a = Magnitude(a - b) >> 1, rough_b = rough_a;
    for (int i = 0; i < PairModel::kNeighbours; ++i) {
      rough_a += Magnitude(a - neighbours_a_[i]);
      rough_b += Magnitude(b - neighbours_b_[i]);
    }
    return MulHighUnsigned(data_weight_a_, misfit_a) + MulHighUnsigned(data_weight_b_, misfit_b) +
           MulHighUnsigned(RoughnessWeight(sweep_, a, floor_a_), rough_a) +
           MulHighUnsigned(RoughnessWeight(sweep_, b, floor_b_), rough_b);
  }

  const PairSweep& sweep_;
  const PairModel& model_;
  int cell_;
  int32_t unit_;
  uint32_t a_, b_;
  uint32_t spread_ = 0;  // what all accepted steps spread
  int32_t floor_a_, floor_b_;
  uint32_t data_weight_a_, data_weight_b_;
  uint32_t neighbours_a_[PairModel::kNeighbours], neighbours_b_[PairModel::kNeighbours];
  uint32_t residual_a_[PairModel::kMaxSide], residual_b_[PairModel::kMaxSide];
};

}  // namespace kelvo

#endif  // KELVO_ROUND_PAIR_TRIAL_H
