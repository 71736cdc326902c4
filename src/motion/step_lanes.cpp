// The search of plain::MoveSteps for neighbouring cells at once, one in each lane of a vector.
#include <array>
#include <type_traits>
#include <utility>

#include "motion/step_shape.h"
#include "motion/step_sweep.h"
#include "stages/lane_search.h"
#include "stages/misfit_lanes.h"
#include "stages/search_turns.h"
#include "stages/weight_lanes.h"

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
  static void Prepare(const StepSide& side, Vector* amounts) {
    for (int i = 0; i < side.padded; ++i) amounts[i] = AsLarge(All(Bits(side.amounts[static_cast<size_t>(i)])));
  }
  Vector rising[StepSide::kMax], falling[StepSide::kMax];
};

// Neighbouring cells of a sweep under search: a trial of LaneSearch. Every lane is a StepTrial; the loads are
// contiguous. As with pairs (round/pair_lanes.h), magnitudes are summed as |r - s| = 2 max(r, s) - r - s, and a side that
// rises is kept as what it lacks.
template <int kShape>
class StepLanes {
 public:
  StepLanes(const StepSweep& sweep, const LaneAmounts& amounts)
      : sweep_(sweep), amounts_(amounts), estimate_(sweep.estimate), floor_(sweep.floor) {}

  // Reads the cells `cell`, `cell + 1`, ..
  void Read(int cell, Vector unit) {
    estimate_ = sweep_.estimate + cell;
    floor_ = sweep_.floor + cell;
    unit_ = unit;
    Unrolled<kTaps>([&](auto i) {
      Vector around{};
      Unrolled<kCells.moved[i].count>([&](auto k) { around += Load(estimate_ + kCells.moved[i].neighbours[k]); });
      around_[i] = around;
    });
    SetMoves();
    const StepModel& model = *sweep_.model;
    const int32_t *misfit = sweep_.misfit + cell, *observed = sweep_.observed + cell;
    total_fallen_ = ReadSide(model.falling, fallen_, [&](int at) { return Load(misfit + at); });
    total_lacks_ = ReadSide(model.rising, lacks_, [&](int at) { return Vector{} - Load(misfit + at); });
    falling_weight_ = DataWeights(sweep_.blurred, Load(observed + model.falling.pixel));
    rising_weight_ = DataWeights(sweep_.blurred, Load(observed + model.rising.pixel));
  }

  Vector Cost(Vector units) const {
    const Vector scaled = units << sweep_.scale_shift;
    Vector values[kTaps], rough[kTaps];
    SmoothnessPlaces places[(kTaps + 1) / 2];
    Unrolled<kTaps>([&](auto i) { values[i] = Value<i>(scaled); });
    Unrolled<(kTaps + 1) / 2>([&](auto k) { places[k].Set(Index<2 * k>(values), Index<Second(k)>(values)); });
    Vector cost = Misfit(scaled);
    Unrolled<kTaps>([&](auto i) {
      Vector over{};
      Unrolled<kCells.moved[i].count>(
          [&](auto k) { over += Greater(values[i], Load(estimate_ + kCells.moved[i].neighbours[k])); });
      rough[i] = (over << 1) - around_[i] - values[i] * static_cast<uint32_t>(kCells.moved[i].count);
      KeepLoaded(rough[i]);  // one cell after the other; compilers take all at once, for which registers do not suffice
    });
    // Both ends see the difference of moved cells that touch, and so it counts half.
    Unrolled<kCells.touching_count>([&](auto k) {
      constexpr TouchingCells kPair = kCells.touching[k];
      const Vector half = Magnitude(values[kPair.first] - values[kPair.second]) >> 1;
      rough[kPair.first] += half;
      rough[kPair.second] += half;
    });
    Unrolled<(kTaps + 1) / 2>([&](auto k) {
      cost += Weighed(places[k].First(sweep_.blurred), rough[2 * k]);
      if constexpr (Second(k) != 2 * k) cost += Weighed(places[k].Second(sweep_.blurred), rough[Second(k)]);
    });
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

  // Fills `cells`, padding with 0. Returns their sum.
  template <class Cell>
  static Vector ReadSide(const StepSide& side, Vector* cells, Cell cell) {
    Vector total{};
    for (int i = 0; i < side.count; ++i) {
      const Vector read = cell(side.cells[static_cast<size_t>(i)]);
      cells[i] = read;
      total += read;
    }
    for (int i = side.count; i < side.padded; ++i) cells[i] = Vector{};
    return total;
  }

  // The second of pair `k` of taps; of an odd one the first again.
  static constexpr int Second(int k) { return 2 * k + 1 < kTaps ? 2 * k + 1 : 2 * k; }

  template <int i>
  Vector Index(const Vector* values) const {
    return SmoothnessIndex(values[i], Load(floor_ + kCells.taps.taps[i].cell));
  }

  Vector Misfit(Vector scaled) const {
    const StepSide &rising = sweep_.model->rising, &falling = sweep_.model->falling;
    const Vector small = AsSmall(scaled);
    Vector fallen{}, lacks{};
    UnrolledByTwo(rising.count, [&](int i) {
      const Vector step = Product(small, amounts_.rising[i]);
      lacks += Greater(lacks_[i], step);
      if constexpr (kMirrored) fallen += Greater(fallen_[i], step);
    });
    if constexpr (!kMirrored)
      UnrolledByTwo(falling.count, [&](int i) { fallen += Greater(fallen_[i], Product(small, amounts_.falling[i])); });
    const auto misfit = [&](const StepSide& side, Vector over, Vector total) {
      return (over << 1) - total - scaled * static_cast<uint32_t>(side.total_amount);
    };
    return MulHigh(falling_weight_, misfit(falling, fallen, total_fallen_)) +
           MulHigh(rising_weight_, misfit(rising, lacks, total_lacks_));
  }

  const StepSweep& sweep_;
  const LaneAmounts& amounts_;
  const int32_t *estimate_, *floor_;  // at the first cell
  Vector unit_;
  Vector moves_[kTaps];   // of one unit, of every first tap
  Vector around_[kTaps];  // sums of the neighbours that do not move
  Vector falling_weight_, rising_weight_;
  Vector total_fallen_, total_lacks_;
  Vector fallen_[StepSide::kMax], lacks_[StepSide::kMax];
};

template <int kShape>
void SearchWindow(const StepSweep& sweep, const LaneAmounts& amounts, const LaneCoder& coder, const Window& window) {
  using Trial = StepLanes<kShape>;
  SearchVectors<Trial, 1>(sweep, amounts, coder, window, [&](Trial& trial, WindowVectors::Place place, Vector unit) {
    const bool tame = IsTame(sweep, unit);
    if (tame)
      trial.Read(CellsTo(place.row, place.column), unit);
    else
      plain::MoveSteps(sweep, {place.row, place.row + 1, place.column + place.skip, place.column + kLanes});
    return tame;
  });
}

using WindowSearch = void (*)(const StepSweep&, const LaneAmounts&, const LaneCoder&, const Window&);

// Under the thread sanitizer, and for clang-tidy, the shapes of two operators are enough.
constexpr bool IsBuilt([[maybe_unused]] StepOperator step_operator) {
#if defined(__SANITIZE_THREAD__)
  return step_operator == StepOperator::kUnit || step_operator == StepOperator::kPair;
#else
  return true;
#endif
}

template <int kShape>
constexpr WindowSearch SearchOf() {
  constexpr auto kOperator = static_cast<StepOperator>(kShape / kBuckets);
  if constexpr (IsBuilt(kOperator) && motion::ShapeNumber(kOperator, kShape % kBuckets * 5) == kShape)
    return SearchWindow<kShape>;
  return nullptr;
}

template <int... shape>
constexpr std::array<WindowSearch, sizeof...(shape)> MakeSearches(std::integer_sequence<int, shape...> /*shapes*/) {
  return {SearchOf<shape>()...};
}
constexpr auto kSearches = MakeSearches(std::make_integer_sequence<int, motion::kShapes>());

}  // namespace

void MoveSteps(const StepSweep& sweep, const Window& window) {
  const WindowSearch search = kSearches.data()[sweep.model->shape];
  if (search == nullptr || window.columns() < kLanes || !FillMisfit(sweep, window.Widened(sweep.model->reach)))
    return plain::MoveSteps(sweep, window);
  const LaneCoder coder(sweep);
  const LaneAmounts amounts(*sweep.model);
  search(sweep, amounts, coder, window);
}

}  // namespace kelvo::KELVO_TARGET
