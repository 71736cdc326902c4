// The search of plain::MoveSteps for neighbouring cells at once, one in each lane of a vector.
#include <array>
#include <type_traits>
#include <utility>

#include "motion/step_shape.h"
#include "motion/step_sweep.h"
#include "stages/lane_search.h"
#include "stages/misfit_lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

// body(0), body(1), .. body(kCount - 1), numbers that are constants.
template <class Body, int... number>
[[gnu::always_inline]] inline void ForEach(std::integer_sequence<int, number...> /*numbers*/,
                                           [[maybe_unused]] Body body) {
  (body(std::integral_constant<int, number>()), ...);
}
template <int kCount, class Body>
[[gnu::always_inline]] inline void Unrolled(Body body) {
  ForEach(std::make_integer_sequence<int, kCount>(), body);
}

// No search gets as far as 2^kUnitBits units: its steps are 1, 2, .. 2^kMaxDoublings, and down again.
constexpr int kUnitBits = kMaxDoublings + 2, kMaxScaleShift = 1;

// Whether trials of the lanes are free of sums that wrap: no cell moves by 2^30, a blurred one by amounts of 2^17 at most.
bool IsTame(const StepSweep& sweep, Vector unit) {
  static_assert(kUnitBits + kMaxScaleShift <= 13 && kGreatestAmount <= 1 << 17);
  return sweep.scale_shift <= kMaxScaleShift && !Any(Magnitude(unit) >> (30 - kUnitBits - sweep.scale_shift));
}

// What a step changes of the blurred cells, for Product.
struct LaneAmounts {
  explicit LaneAmounts(const StepModel& model) {
    Prepare(model.rising, rising);
    Prepare(model.falling, falling);
  }
  static void Prepare(const StepSide& side, uint32_t* amounts) {
    for (int i = 0; i < side.count; ++i) amounts[i] = AsLarge(Bits(side.amounts[static_cast<size_t>(i)]));
  }
  uint32_t rising[StepSide::kMax], falling[StepSide::kMax];
};

// The cells `cell`, `cell + 1`, .. of a sweep under search: a trial of LaneSearch. Every lane is a StepTrial; the loads
// are contiguous. As with pairs (round/pair_lanes.h), magnitudes are summed as |r - s| = 2 max(r, s) - r - s, and a side
// that rises is kept as what it lacks.
template <int kShape>
class StepLanes {
 public:
  StepLanes(const StepSweep& sweep, const LaneAmounts& amounts, int cell, Vector unit)
      : sweep_(sweep), amounts_(amounts), estimate_(sweep.estimate + cell), floor_(sweep.floor + cell), unit_(unit) {
    Unrolled<kTaps>([&](auto i) {
      around_[i] = Vector{};
      Unrolled<kCells.moved[i].count>([&](auto k) { around_[i] += Load(estimate_ + kCells.moved[i].neighbours[k]); });
    });
    SetMoves();
    const StepModel& model = *sweep.model;
    Read(model.falling, cell, fallen_, total_fallen_);
    Read(model.rising, cell, lacks_, total_lacks_);
    for (int i = 0; i < model.rising.count; ++i) lacks_[i] = Vector{} - lacks_[i];
    total_lacks_ = Vector{} - total_lacks_;
    falling_weight_ = DataWeights(cell + model.falling.pixel);
    rising_weight_ = DataWeights(cell + model.rising.pixel);
  }

  Vector Cost(Vector units) const {
    const Vector scaled = units << sweep_.scale_shift;
    Vector values[kTaps], rough[kTaps];
    Unrolled<kTaps>([&](auto i) { values[i] = Value<i>(scaled); });
    Unrolled<kTaps>([&](auto i) {
      Vector over{};
      Unrolled<kCells.moved[i].count>(
          [&](auto k) { over += Greater(values[i], Load(estimate_ + kCells.moved[i].neighbours[k])); });
      rough[i] = (over << 1) - around_[i] - values[i] * static_cast<uint32_t>(kCells.moved[i].count);
    });
    // Both ends see the difference of moved cells that touch, and so it counts half.
    Unrolled<kCells.touching_count>([&](auto k) {
      constexpr TouchingCells kPair = kCells.touching[k];
      const Vector half = Magnitude(values[kPair.first] - values[kPair.second]) >> 1;
      rough[kPair.first] += half;
      rough[kPair.second] += half;
    });
    Vector cost = Misfit(scaled);
    Unrolled<kTaps>([&](auto i) { cost += MulHigh(RoughnessWeights<i>(values[i]), rough[i]); });
    return cost;
  }

  void Accept(Vector, Vector) const {}  // every move is taken back

  void HalveUnits(Vector lanes) {
    unit_ = Select(lanes, ShiftRightArithmetic(unit_, 1), unit_);
    SetMoves();
  }

 private:
  static constexpr StepShape kCells = motion::ShapeOf(kShape);
  static constexpr int kTaps = kCells.taps.count;
  static constexpr bool kMirrored = kShape / kBuckets != static_cast<int>(StepOperator::kUnit);

  // The first of the taps that move as far as tap `i`, in one direction or the other.
  static constexpr int FirstLike(int i) {
    int first = 0;
    const auto cell = [](int tap) { return kCells.taps.taps[static_cast<size_t>(tap)].cell; };
    while (first != i && cell(first) != -cell(i)) ++first;
    return first;
  }

  // TapAmount in every lane. The share of 65536 keeps the low 32 of the 48 bits of the product >> 16.
  void SetMoves() {
    const Vector half = ShiftRightArithmetic(unit_, 1);
    Unrolled<kTaps>([&](auto i) {
      if constexpr (FirstLike(i) == i) {
        constexpr TapBase kBase = kCells.taps.taps[i].base;
        moves_[i] = kBase == TapBase::kWhole ? unit_ : kBase == TapBase::kHalf ? half : half << 1;
        const int32_t share = sweep_.model->taps.taps[i].share;
        if (share != 65536) moves_[i] = MulHighSigned(moves_[i], All(static_cast<uint32_t>(share) << 16));
      }
    });
  }

  template <int i>
  Vector Value(Vector scaled) const {
    constexpr OperatorTap kTap = kCells.taps.taps[i];
    const Vector was = Load(estimate_ + kTap.cell), move = moves_[FirstLike(i)] * scaled;
    return kTap.sign < 0 ? was - move : was + move;
  }

  void Read(const StepSide& side, int cell, Vector* residuals, Vector& total) const {
    for (int i = 0; i < side.count; ++i)
      total += residuals[i] = Load(sweep_.misfit + cell + side.cells[static_cast<size_t>(i)]);
  }

  Vector DataWeights(int pixel) const {
    return Gather(DataWeightTable(sweep_.blurred), ShiftRightArithmetic(Load(sweep_.observed + pixel), 16));
  }

  template <int i>
  Vector RoughnessWeights(Vector value) const {
    const Vector below = ShiftRightArithmetic(value - Load(floor_ + kCells.taps.taps[i].cell), 1);
    const Vector index = ShiftRightArithmetic(value + NegativePart(below), 16);
    return Gather(SmoothnessTable(sweep_.blurred), Clamp(index, kFirstSmoothness, kLastSmoothness));
  }

  Vector Misfit(Vector scaled) const {
    const StepSide &rising = sweep_.model->rising, &falling = sweep_.model->falling;
    const Vector small = AsSmall(scaled);
    Vector fallen{}, lacks{};
    for (int i = 0; i < rising.count; ++i) {
      const Vector step = Product(small, All(amounts_.rising[i]));
      lacks += Greater(lacks_[i], step);
      if constexpr (kMirrored) fallen += Greater(fallen_[i], step);
    }
    if constexpr (!kMirrored)
      for (int i = 0; i < falling.count; ++i) fallen += Greater(fallen_[i], Product(small, All(amounts_.falling[i])));
    const auto misfit = [&](const StepSide& side, Vector over, Vector total) {
      return (over << 1) - total - scaled * static_cast<uint32_t>(side.total_amount);
    };
    return MulHigh(falling_weight_, misfit(falling, fallen, total_fallen_)) +
           MulHigh(rising_weight_, misfit(rising, lacks, total_lacks_));
  }

  const StepSweep& sweep_;
  const LaneAmounts& amounts_;
  const int32_t *estimate_, *floor_;
  Vector unit_;
  Vector moves_[kTaps];   // of one unit, of every first tap
  Vector around_[kTaps];  // sums of the neighbours that do not move
  Vector falling_weight_, rising_weight_;
  Vector total_fallen_{}, total_lacks_{};
  Vector fallen_[StepSide::kMax], lacks_[StepSide::kMax];
};

// The last vector overlaps the one before it and keeps that one's codes.
template <int kShape>
void SearchRow(const StepSweep& sweep, const LaneAmounts& amounts, const LaneCoder& coder, int row, int first,
               int count) {
  for (int done = 0; done < count; done += kLanes) {
    const int at = done <= count - kLanes ? done : count - kLanes;
    int32_t* codes = sweep.codes + CellsTo(row, first + at);
    const Vector was = Load(codes), previous = LaneCoder::Previous(was), unit = coder.Units(previous);
    if (!IsTame(sweep, unit)) {
      plain::MoveSteps(sweep, {row, row + 1, first + done, first + at + kLanes});
      continue;
    }
    StepLanes<kShape> trial(sweep, amounts, CellsTo(row, first + at), unit);
    LaneSearch search(trial, All(~0u), coder.FirstSign(previous), HalvesOnReversal(sweep));
    const Vector coded = coder.Coded(was, search.Run());
    for (int i = done - at; i < kLanes; ++i) codes[i] = static_cast<int32_t>(coded[i]);
  }
}

using RowSearch = void (*)(const StepSweep&, const LaneAmounts&, const LaneCoder&, int row, int first, int count);

// Under the thread sanitizer, and for clang-tidy, the shapes of two operators are enough.
constexpr bool IsBuilt([[maybe_unused]] StepOperator step_operator) {
#if defined(__SANITIZE_THREAD__)
  return step_operator == StepOperator::kUnit || step_operator == StepOperator::kPair;
#else
  return true;
#endif
}

template <int kShape>
constexpr RowSearch SearchOf() {
  constexpr auto kOperator = static_cast<StepOperator>(kShape / kBuckets);
  if constexpr (IsBuilt(kOperator) && motion::ShapeNumber(kOperator, kShape % kBuckets * 5) == kShape)
    return SearchRow<kShape>;
  return nullptr;
}

template <int... shape>
constexpr std::array<RowSearch, sizeof...(shape)> MakeSearches(std::integer_sequence<int, shape...> /*shapes*/) {
  return {SearchOf<shape>()...};
}
constexpr auto kSearches = MakeSearches(std::make_integer_sequence<int, motion::kShapes>());

}  // namespace

void MoveSteps(const StepSweep& sweep, const Window& window) {
  const RowSearch search = kSearches.data()[sweep.model->shape];
  if (search == nullptr || window.columns() < kLanes || !FillMisfit(sweep, window.Widened(sweep.model->reach)))
    return plain::MoveSteps(sweep, window);
  const LaneCoder coder(sweep);
  const LaneAmounts amounts(*sweep.model);
  for (int row = window.first_row; row < window.end_row; ++row)
    search(sweep, amounts, coder, row, window.first_column, window.columns());
}

}  // namespace kelvo::KELVO_TARGET
