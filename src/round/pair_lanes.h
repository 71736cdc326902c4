// Pairs under search in the lanes of a vector; included by the files that are compiled once per level.
#ifndef KELVO_ROUND_PAIR_LANES_H
#define KELVO_ROUND_PAIR_LANES_H

#include "round/pair_sweep.h"
#include "stages/lane_search.h"
#include "stages/weight_lanes.h"

namespace kelvo::KELVO_TARGET {

// What a move changes of the blurred cells, for Product.
struct PairAmounts {
  explicit PairAmounts(const PairModel& model) {
    for (int i = 0; i < model.padded; ++i) of[i] = AsLarge(All(Bits(model.amounts[static_cast<size_t>(i)])));
  }
  Vector of[PairModel::kMaxSide];
};

// A trial of LaneSearch.
//
// A side that rises is kept as what it lacks, observed minus blurred, so that a step lowers both sides.
//
// A sum of magnitudes costs three operations a cell, and two where nothing can wrap: |r - s| = 2 max(r, s) - r - s.
// That holds while r and s lie within 2^30 of zero, as they do unless an estimate has run away; then the longer
// way is taken, which is right for all values.
class PairLanes {
 public:
  PairLanes(const PairSweep& sweep, const PairAmounts& amounts)
      : sweep_(sweep), model_(*sweep.model), amounts_(amounts) {}

  // `cells` reads the planes around the lanes' pairs, by distance in cells:
  //   A, B; NeighbourA, NeighbourB (i)  the estimate at the pixels and at their neighbours
  //   Floor, Observed (distance)        those planes
  //   Falling, Rising (i)               the misfits of response cell i of either side
  // `tame`: misfits and estimate are known to lie within 2^30 of zero; Cells::kChanging: nothing is known of them.
  template <class Cells>
  void Read(const Cells& cells, Vector unit, bool tame) {
    unit_ = unit;
    a_ = cells.A();
    b_ = cells.B();
    floor_a_ = cells.Floor(model_.a);
    floor_b_ = cells.Floor(model_.b);
    data_weight_a_ = DataWeights(sweep_.blurred, cells.Observed(model_.a));
    data_weight_b_ = DataWeights(sweep_.blurred, cells.Observed(model_.b));
    spread_ = Vector{};
    Vector largest{}, sum_a{}, sum_b{}, total_a{}, total_b{};
    for (int i = 0; i < PairModel::kNeighbours; ++i) {
      sum_a += neighbours_a_[i] = cells.NeighbourA(i);
      sum_b += neighbours_b_[i] = cells.NeighbourB(i);
      if constexpr (Cells::kChanging) largest |= Magnitude(neighbours_a_[i]) | Magnitude(neighbours_b_[i]);
    }
    for (int i = 0; i < model_.side; ++i) {
      total_a += residual_a_[i] = cells.Falling(i);
      total_b += lack_b_[i] = Vector{} - cells.Rising(i);
      if constexpr (Cells::kChanging) largest |= Magnitude(residual_a_[i]) | Magnitude(lack_b_[i]);
    }
    for (int i = model_.side; i < model_.padded; ++i) residual_a_[i] = lack_b_[i] = Vector{};
    sum_a_ = sum_a;
    sum_b_ = sum_b;
    total_a_ = total_a;
    total_b_ = total_b;
    tame_ = Cells::kChanging ? !Any(largest >> 30) : tame;
  }

  Vector Cost(Vector units) const {
    const Vector scaled = units << sweep_.scale_shift;
    const Vector move = unit_ * scaled, a = a_ - move, b = b_ + move;
    // Steps of less than 2^13 scaled units change no cell by 2^30, as amounts go.
    const bool tame = tame_ && !Any((Magnitude(scaled) >> 13) | ((Magnitude(a) | Magnitude(b)) >> 30));
    return tame ? TameCost(scaled, a, b) : WildCost(scaled, a, b);
  }

  // What moves by `step` units spread, if taken: SearchMove's steps one by one, as every one is truncated.
  void Accept(Vector lanes, Vector step) {
    spread_ += ShiftRightArithmetic(unit_ * (step << sweep_.scale_shift), model_.spread_shift) & lanes;
  }
  Vector spread() const { return spread_; }

  void HalveUnits(Vector lanes) {
    unit_ = Select(lanes, ShiftRightArithmetic(unit_, 1), unit_);
    spread_ &= ~lanes;
  }

 private:
  // What both ways of summing have in common: where the weights lie, and what they weigh.
  SmoothnessPlaces Places(Vector a, Vector b) const {
    SmoothnessPlaces places;
    places.Set(SmoothnessIndex(a, floor_a_), SmoothnessIndex(b, floor_b_));
    return places;
  }
  Vector Weigh(const SmoothnessPlaces& places, Vector misfit_a, Vector misfit_b, Vector rough_a, Vector rough_b) const {
    return MulHigh(data_weight_a_, misfit_a) + MulHigh(data_weight_b_, misfit_b) +
           Weighed(places.First(sweep_.blurred), rough_a) + Weighed(places.Second(sweep_.blurred), rough_b);
  }

  Vector TameCost(Vector scaled, Vector a, Vector b) const {
    const SmoothnessPlaces places = Places(a, b);
    Vector over_a{}, over_b{}, rough_a{}, rough_b{};
    const Vector small = AsSmall(scaled);
    UnrolledByTwo(model_.side, [&](int i) {
      const Vector step = Product(small, amounts_.of[i]);
      over_a += Greater(residual_a_[i], step);
      over_b += Greater(lack_b_[i], step);
    });
    for (int n = 0; n < PairModel::kNeighbours; ++n) {
      rough_a += Greater(neighbours_a_[n], a);
      rough_b += Greater(neighbours_b_[n], b);
    }
    const Vector total = scaled * static_cast<uint32_t>(model_.total_amount), half = Magnitude(a - b) >> 1;
    constexpr uint32_t kCount = PairModel::kNeighbours;
    return Weigh(places, (over_a << 1) - total_a_ - total, (over_b << 1) - total_b_ - total,
                 (rough_a << 1) - sum_a_ - a * kCount + half, (rough_b << 1) - sum_b_ - b * kCount + half);
  }

  Vector WildCost(Vector scaled, Vector a, Vector b) const {
    Vector misfit_a{}, misfit_b{};
    for (int i = 0; i < model_.side; ++i) {
      const Vector step = scaled * static_cast<uint32_t>(model_.amounts[static_cast<size_t>(i)]);
      misfit_a += Magnitude(residual_a_[i] - step);
      misfit_b += Magnitude(lack_b_[i] - step);
    }
    Vector rough_a = Magnitude(a - b) >> 1, rough_b = rough_a;
    for (int i = 0; i < PairModel::kNeighbours; ++i) {
      rough_a += Magnitude(a - neighbours_a_[i]);
      rough_b += Magnitude(b - neighbours_b_[i]);
    }
    return Weigh(Places(a, b), misfit_a, misfit_b, rough_a, rough_b);
  }

  const PairSweep& sweep_;
  const PairModel& model_;
  const PairAmounts& amounts_;
  Vector unit_;
  bool tame_ = false;
  Vector a_, b_, floor_a_, floor_b_, data_weight_a_, data_weight_b_;
  Vector spread_;
  Vector total_a_, total_b_, sum_a_, sum_b_;  // of all residuals, and of all neighbours
  Vector neighbours_a_[PairModel::kNeighbours], neighbours_b_[PairModel::kNeighbours];
  Vector residual_a_[PairModel::kMaxSide], lack_b_[PairModel::kMaxSide];
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_ROUND_PAIR_LANES_H
