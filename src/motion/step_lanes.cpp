// The search of plain::StepRow for neighbouring cells at once, one in each lane of a vector.
#include "motion/step_sweep.h"
#include "stages/lane_search.h"
#include "stages/misfit_lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

// The cells `cell`, `cell + 1`, .. of a sweep under search: a trial of LaneSearch. Every lane is a StepTrial; the loads
// are contiguous. As with pairs (round/pair_lanes.h), magnitudes are summed as |r + s| = 2 max(r, -s) - r + s where
// nothing can wrap.
class StepLanes {
 public:
  // `tame`: misfits and estimate lie within 2^30 of zero.
  StepLanes(const StepSweep& sweep, int cell, Vector unit, bool tame)
      : sweep_(sweep), model_(*sweep.model), cell_(cell), tame_(tame), unit_(unit) {
    for (int i = 0; i < model_.taps.count; ++i) {
      values_[i] = Load(sweep.estimate + cell + Tap(i).cell);
      floors_[i] = Load(sweep.floor + cell + Tap(i).cell);
      around_[i] = Vector{};
      const MovedCell& moved = model_.moved[static_cast<size_t>(i)];
      for (size_t k = 0; k < static_cast<size_t>(moved.count); ++k)
        around_[i] += Load(sweep.estimate + cell + moved.neighbours[k]);
    }
    SetAmounts();
    ReadSide(model_.rising, risen_, total_risen_);
    ReadSide(model_.falling, fallen_, total_fallen_);
    rising_weight_ = DataWeights(model_.rising.pixel);
    falling_weight_ = DataWeights(model_.falling.pixel);
  }

  Vector Cost(Vector units) const {
    const Vector scaled = units << sweep_.scale_shift;
    Vector values[OperatorTaps::kMax], largest{};
    for (int i = 0; i < model_.taps.count; ++i) {
      values[i] = values_[i] + amounts_[i] * scaled;
      largest |= Magnitude(values[i]);
    }
    // Steps of less than 2^13 scaled units change no cell by 2^30, as amounts go.
    const bool tame = tame_ && !Any((Magnitude(scaled) >> 13) | (largest >> 30));
    return tame ? TameCost(scaled, values) : WildCost(scaled, values);
  }

  void Accept(Vector, Vector) const {}  // every move is taken back

  void HalveUnits(Vector lanes) {
    unit_ = Select(lanes, ShiftRightArithmetic(unit_, 1), unit_);
    SetAmounts();
  }

 private:
  const OperatorTap& Tap(int i) const { return model_.taps.taps[static_cast<size_t>(i)]; }

  // TapAmount in every lane, signed. The share of 65536 keeps the low 32 of the 48 bits of the product >> 16.
  void SetAmounts() {
    for (int i = 0; i < model_.taps.count; ++i) {
      const OperatorTap& tap = Tap(i);
      const Vector half = ShiftRightArithmetic(unit_, 1);
      Vector amount = tap.base == TapBase::kWhole ? unit_ : tap.base == TapBase::kHalf ? half : half << 1;
      if (tap.share != 65536) amount = MulHighSigned(amount, All(static_cast<uint32_t>(tap.share) << 16));
      amounts_[i] = tap.sign < 0 ? Vector{} - amount : amount;
    }
  }

  void ReadSide(const StepSide& side, Vector* residuals, Vector& total) const {
    for (int i = 0; i < side.count; ++i)
      total += residuals[i] = Load(sweep_.misfit + cell_ + side.cells[static_cast<size_t>(i)]);
  }

  Vector DataWeights(int pixel) const {
    return Gather(DataWeightTable(sweep_.blurred), ShiftRightArithmetic(Load(sweep_.observed + cell_ + pixel), 16));
  }

  Vector RoughnessWeights(Vector value, int tap) const {
    Vector below = ShiftRightArithmetic(value - floors_[tap], 1);
    below &= Negative(below);
    const Vector index = Clamp(ShiftRightArithmetic(value + below, 16), kFirstSmoothness, kLastSmoothness);
    return Gather(SmoothnessTable(sweep_.blurred), index);
  }

  // Adds the differences of moved cells that touch; half from either end. Returns the whole cost.
  Vector Weighed(Vector risen, Vector fallen, const Vector* values, Vector* rough) const {
    for (size_t k = 0; k < static_cast<size_t>(model_.touching_count); ++k) {
      const TouchingCells pair = model_.touching[k];
      const Vector half = Magnitude(values[pair.first] - values[pair.second]) >> 1;
      rough[pair.first] += half;
      rough[pair.second] += half;
    }
    Vector cost = MulHigh(rising_weight_, risen) + MulHigh(falling_weight_, fallen);
    for (int i = 0; i < model_.taps.count; ++i) cost += MulHigh(RoughnessWeights(values[i], i), rough[i]);
    return cost;
  }

  // Cells of one amount share their product. Two sums, as one addition would have to wait for the other.
  static Vector TameMisfit(const StepSide& side, const Vector* residuals, Vector total, Vector scaled) {
    Vector over{}, over_too{};
    int i = 0;
    for (int run = 0; run < side.run_count; ++run) {
      const int end = side.runs[static_cast<size_t>(run)].end;
      const Vector back = Vector{} - scaled * static_cast<uint32_t>(side.runs[static_cast<size_t>(run)].amount);
      for (; i + 1 < end; i += 2) {
        over += Greater(residuals[i], back);
        over_too += Greater(residuals[i + 1], back);
      }
      if (i < end) over += Greater(residuals[i++], back);
    }
    return ((over + over_too) << 1) - total + scaled * static_cast<uint32_t>(side.total_amount);
  }

  Vector TameCost(Vector scaled, const Vector* values) const {
    Vector rough[OperatorTaps::kMax];
    for (int i = 0; i < model_.taps.count; ++i) {
      const MovedCell& moved = model_.moved[static_cast<size_t>(i)];
      Vector over{};
      for (size_t k = 0; k < static_cast<size_t>(moved.count); ++k)
        over += Greater(values[i], Load(sweep_.estimate + cell_ + moved.neighbours[k]));
      rough[i] = (over << 1) - around_[i] - values[i] * static_cast<uint32_t>(moved.count);
    }
    return Weighed(TameMisfit(model_.rising, risen_, total_risen_, scaled),
                   TameMisfit(model_.falling, fallen_, total_fallen_, Vector{} - scaled), values, rough);
  }

  static Vector WildMisfit(const StepSide& side, const Vector* residuals, Vector scaled) {
    Vector misfit{};
    for (int i = 0; i < side.count; ++i)
      misfit += Magnitude(residuals[i] + scaled * static_cast<uint32_t>(side.amounts[static_cast<size_t>(i)]));
    return misfit;
  }

  Vector WildCost(Vector scaled, const Vector* values) const {
    Vector rough[OperatorTaps::kMax];
    for (int i = 0; i < model_.taps.count; ++i) {
      rough[i] = Vector{};
      const MovedCell& moved = model_.moved[static_cast<size_t>(i)];
      for (size_t k = 0; k < static_cast<size_t>(moved.count); ++k)
        rough[i] += Magnitude(values[i] - Load(sweep_.estimate + cell_ + moved.neighbours[k]));
    }
    return Weighed(WildMisfit(model_.rising, risen_, scaled), WildMisfit(model_.falling, fallen_, Vector{} - scaled),
                   values, rough);
  }

  const StepSweep& sweep_;
  const StepModel& model_;
  int cell_;
  bool tame_;
  Vector unit_;
  Vector amounts_[OperatorTaps::kMax], values_[OperatorTaps::kMax], floors_[OperatorTaps::kMax];
  Vector around_[OperatorTaps::kMax];  // sums of the neighbours that do not move
  Vector rising_weight_, falling_weight_;
  Vector total_risen_{}, total_fallen_{};
  Vector risen_[StepSide::kMax], fallen_[StepSide::kMax];
};

// The last vector overlaps the one before it and keeps that one's codes.
void SearchRow(const StepSweep& sweep, const LaneCoder& coder, int first, int count, bool tame) {
  for (int done = 0; done < count; done += kLanes) {
    const int at = done <= count - kLanes ? done : count - kLanes;
    int32_t* codes = sweep.codes + first + at;
    const Vector was = Load(codes), previous = LaneCoder::Previous(was);
    StepLanes trial(sweep, first + at, coder.Units(previous), tame);
    LaneSearch search(trial, All(~0u), coder.FirstSign(previous), HalvesOnReversal(sweep));
    const Vector coded = coder.Coded(was, search.Run());
    for (int i = done - at; i < kLanes; ++i) codes[i] = static_cast<int32_t>(coded[i]);
  }
}

}  // namespace

void MoveSteps(const StepSweep& sweep, const Window& window) {
  if (window.columns() < kLanes) return plain::MoveSteps(sweep, window);
  const bool tame = FillMisfit(sweep, window.Widened(sweep.model->reach));
  const LaneCoder coder(sweep);
  for (int row = window.first_row; row < window.end_row; ++row)
    SearchRow(sweep, coder, CellsTo(row, window.first_column), window.columns(), tame);
}

}  // namespace kelvo::KELVO_TARGET
