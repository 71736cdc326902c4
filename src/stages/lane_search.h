// The search of stages/move_search.h in every lane of a vector, and what codes its result.
//
// The cells of a vector do not depend on one another, so a lane is free to be tried on with steps that it has no use
// for: lanes that are done wait until all are. The state of a trial is its number of units alone:
//   Vector Cost(Vector units) const   cost after `units` in all
//   void HalveUnits(Vector lanes)     halves the unit in the lanes of the mask
//   void Accept(Vector lanes, Vector step)  told of every step that is taken
#ifndef KELVO_STAGES_LANE_SEARCH_H
#define KELVO_STAGES_LANE_SEARCH_H

#include "stages/lanes.h"
#include "stages/move_sweep.h"
#include "stages/step_code.h"

namespace kelvo::KELVO_TARGET {

template <class Trial>
class LaneSearch {
 public:
  // Searches the lanes of the mask `active`; the others stay unmoved.
  LaneSearch(Trial& trial, Vector active, Vector first_sign, bool halve_on_reversal)
      : active_(active), sign_(first_sign), trial_(trial), halve_(halve_on_reversal) {}

  // The best moves in units.
  Vector Run() {
    const Vector unmoved = trial_.Cost(Vector{});
    cost_ = trial_.Cost(sign_);
    Vector moving = Less(cost_, unmoved) & active_;
    const Vector others = active_ & ~moving;
    if (Any(others)) moving |= Turn(others, unmoved);
    units_ = sign_ & moving;
    trial_.Accept(moving, sign_);
    if (Any(moving)) Halve(Double(moving) & moving);
    return units_;
  }

 private:
  // Tries the other sign in `lanes`; returns those that it helps.
  Vector Turn(Vector lanes, Vector unmoved) {
    const Vector other = trial_.Cost(Vector{} - sign_);
    const Vector turned = lanes & Less(other, unmoved);
    if (!Any(turned)) return turned;
    sign_ = Select(turned, Vector{} - sign_, sign_);
    cost_ = Select(turned, other, cost_);
    if (halve_) {
      trial_.HalveUnits(turned);
      cost_ = Select(turned, trial_.Cost(sign_), cost_);
    }
    return turned;
  }

  // Doubles in the lanes where that pays; returns the last step that did, 1 if none.
  Vector Double(Vector running) {
    Vector last = All(1);
    for (int j = 1; j <= kMaxDoublings && Any(running); ++j) {
      const Vector candidate = units_ + (sign_ << j), next = trial_.Cost(candidate);
      running &= Less(next, cost_);
      cost_ = Select(running, next, cost_);
      trial_.Accept(running, sign_ << j);
      units_ = Select(running, candidate, units_);
      last = Select(running, All(1u << j), last);
    }
    return last;
  }

  // From `step` units down: each size forward, half the size back where that fails, and forward again. A lane whose
  // step is 0 is done.
  void Halve(Vector step) {
    Vector back{};
    while (Any(step)) {
      const Vector direction = Negative(sign_ ^ back);
      const Vector signed_step = (step ^ direction) - direction;
      const Vector candidate = units_ + signed_step, next = trial_.Cost(candidate);
      const Vector better = Less(next, cost_) & ~Equal(step, Vector{});
      cost_ = Select(better, next, cost_);
      trial_.Accept(better, signed_step);
      units_ = Select(better, candidate, units_);
      sign_ = Select(better & back, Vector{} - sign_, sign_);
      step = Select(~back | better, step >> 1, step);
      back = ~back & ~better;
    }
  }

  Vector active_, sign_;
  Vector cost_{}, units_{};
  Trial& trial_;
  bool halve_;
};

// What the cells of a row have in common: the units of the step codes 0..15, -16..-1, and how moves are coded.
class LaneCoder {
 public:
  explicit LaneCoder(const MoveSweep& sweep) : sweep_(sweep) {
    for (int code = 0; code < 32; ++code) units_[code] = UnitOf(sweep, code);
  }

  // The signed low halves of cells of a coded plane.
  static Vector Previous(Vector cells) { return ShiftRightArithmetic(cells << 16, 16); }

  Vector Units(Vector previous) const {
    if (sweep_.iteration <= 2) return All(static_cast<uint32_t>(sweep_.unit));
    return Gather(units_, previous & 31);
  }

  // 1 or -1.
  Vector FirstSign(Vector previous) const { return sweep_.iteration >= 2 ? Negative(previous) | 1 : All(1); }

  // `cells` with the moves `units` coded into their low halves.
  Vector Coded(Vector cells, Vector units) const {
    return (cells & 0xFFFF0000u) | (Code(Previous(cells), units) & 0xFFFFu);
  }

 private:
  static constexpr int kLeastCode = -8, kGreatestCode = 15, kGreatestMantissa = 1023;

  // CodeStep in every lane.
  Vector Code(Vector previous, Vector units) const {
    const Vector value = Clamp(units, -kGreatestMantissa, kGreatestMantissa);
    if (sweep_.iteration == 1) return value << 5;
    const Vector code = ((previous & 31) ^ 16) - 16, mantissa = ShiftRightArithmetic(previous, 5);
    const Vector nothing = Equal(value, Vector{}), first = Equal(mantissa, Vector{});
    const Vector reversed = ~nothing & ~first & Negative(mantissa ^ value);
    Vector next = Select(nothing, Rested(code, mantissa), Grown(code, mantissa, value));
    if (Any(reversed)) next = Select(reversed, Shrunken(code, Magnitude(value), reversed), next);
    return (value << 5) + (Select(first, code, next) & 31);
  }

  static Vector Rested(Vector code, Vector mantissa) {
    const Vector lower = Greater(code - 1, All(static_cast<uint32_t>(kLeastCode)));
    return Select(Less(All(2), Magnitude(mantissa)), lower, code);
  }

  static Vector Grown(Vector code, Vector mantissa, Vector value) {
    const Vector sign = Negative(value);
    const auto beyond = [&](Vector limit) { return Select(sign, LessSigned(value, limit), LessSigned(limit, value)); };
    const Vector half = beyond(ShiftRightArithmetic(mantissa, 1)), twice = beyond(mantissa + mantissa);
    return Select(half, Lesser(code + 1 + (twice & 1), All(kGreatestCode)), code);
  }

  Vector Shrunken(Vector code, Vector size, Vector lanes) const {
    const FloatVector value = __builtin_convertvector(ToSigned(size), FloatVector);
    const Vector limit = All(static_cast<uint32_t>(sweep_.half_step));
    code = Greater(code - 2, All(static_cast<uint32_t>(kLeastCode)));
    for (;;) {
      const FloatVector factor = GatherFloats(kStepFactors, code & 31);
      const Vector scaled = FromSigned(__builtin_convertvector(factor * value, SignedVector));
      lanes &= LessSigned(limit, scaled) & LessSigned(All(static_cast<uint32_t>(kLeastCode)), code);
      if (!Any(lanes)) return code;
      code += lanes;
    }
  }

  const MoveSweep& sweep_;
  int32_t units_[32];
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_LANE_SEARCH_H
