// The search of stages/move_search.h in every lane of a vector, and what codes its result.
//
// The cells of a vector do not depend on one another: every lane tries its own next step, and lanes that are done wait
// until all are. The state of a trial is its number of units alone:
//   Vector Cost(Vector units) const   cost after `units` in all
//   void Accept(Vector lanes, Vector step)  told of every step that is taken
//   void HalveUnits(Vector lanes)     halves the unit in the lanes of the mask, and forgets what they accepted
#ifndef KELVO_STAGES_LANE_SEARCH_H
#define KELVO_STAGES_LANE_SEARCH_H

#include "stages/lanes.h"
#include "stages/move_sweep.h"
#include "stages/step_code.h"

namespace kelvo::KELVO_TARGET {

// body(0), body(1), .. body(count - 1), two at a time; where `count` is odd body(count) too, which is to be padding.
template <class Body>
[[gnu::always_inline]] inline void UnrolledByTwo(int count, Body body) {
  for (int i = 0; i < count; i += 2) {
    body(i);
    body(i + 1);
  }
}

template <class Trial>
class LaneSearch {
 public:
  explicit LaneSearch(Trial& trial) : trial_(trial) {}

  // Begins to search the lanes of the mask `active`; the others stay unmoved.
  void Begin(Vector active, Vector first_sign, bool halve_on_reversal) {
    active_ = active;
    sign_ = first_sign;
    halve_ = halve_on_reversal;
    steps_ = 0;
    units_ = back_ = turning_ = unseen_ = Vector{};
    growing_ = All(~0u);
    step_ = active & 1;
    cost_ = trial_.Cost(units_);
  }

  // Tries the next step of every lane that is not done. Returns whether there are any left.
  bool Step() {
    const Vector direction = Negative(sign_ ^ back_);
    const Vector step = (step_ ^ direction) - direction, candidate = units_ + step, next = trial_.Cost(candidate);
    const Vector better = (Less(next, cost_) | unseen_) & ~Equal(step_, Vector{});
    trial_.Accept(better, step);
    cost_ = Select(better, next, cost_);
    units_ = Select(better, candidate, units_);
    sign_ = Select(better & back_, Vector{} - sign_, sign_);
    Advance(better);
    if (++steps_ <= 3) Turn();
    return Any(step_);
  }

  // The best moves in units.
  Vector units() const { return units_; }

 private:
  static constexpr uint32_t kGreatestStep = 1u << kMaxDoublings;

  // Doubles as long as that pays; then down again, each size forward, half the size back where that failed, and forward
  // again.
  void Advance(Vector better) {
    const Vector grown = growing_ & better, greatest = Equal(step_, All(kGreatestStep));
    const Vector lower = Select(back_ & ~better, step_, step_ >> 1);
    step_ = Select(grown, Select(greatest, step_, step_ << 1), lower);
    back_ = ~(growing_ | back_ | better);
    growing_ = grown & ~greatest;
  }

  // Lanes that the first unit did not help try the other sign, with half the unit if that helps.
  void Turn() {
    unseen_ = Vector{};
    if (steps_ == 1) {
      turning_ = active_ & Equal(units_, Vector{});
      sign_ = Select(turning_, Vector{} - sign_, sign_);
      step_ |= turning_ & 1;
      growing_ |= turning_;
    } else if (steps_ == 2 && halve_) {
      unseen_ = turning_ & ~Equal(units_, Vector{});
      if (!Any(unseen_)) return;
      trial_.HalveUnits(unseen_);
      units_ &= ~unseen_;
      step_ = Select(unseen_, All(1), step_);
    }
  }

  Vector active_, sign_, cost_, units_;
  Vector step_;     // the size of the next one; 0 in lanes that are done
  Vector growing_;  // lanes whose steps still double
  Vector back_;     // lanes that go against their sign for one step
  Vector turning_;  // lanes that the first unit did not help
  Vector unseen_;   // lanes that take the next step whatever it costs
  int steps_ = 0;
  Trial& trial_;
  bool halve_ = false;
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
