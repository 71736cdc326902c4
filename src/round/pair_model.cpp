#include "round/pair_model.h"

#include <cassert>
#include <utility>

#include "stages/stencils/disc.h"

namespace kelvo {
namespace {

// The blur's weights on a square, in 1/65536, each truncated; 0 outside its cells.
class WeightGrid {
 public:
  static constexpr int kReach = DiscReach(kMaxWidth);

  constexpr explicit WeightGrid(const Stencil& blur) {
    int finest = 0;
    for (const PartialSum sum : blur.sums) finest = sum.shift > finest ? sum.shift : finest;
    int64_t total = 0;
    size_t next = 0;
    for (const PartialSum sum : blur.sums)
      for (int i = 0; i < sum.count; ++i) {
        const CellStep step = StepOver(blur.cells[next++]);
        const int64_t weight = int64_t{1} << (finest - sum.shift);
        weights_[Index(step.row, step.column)] += weight;
        total += weight;
      }
    assert(total > 0);
    for (int64_t& weight : weights_) weight = weight * 65536 / total;
  }

  constexpr int32_t At(int row, int column) const {
    if (row < -kReach || row > kReach || column < -kReach || column > kReach) return 0;
    return static_cast<int32_t>(weights_[Index(row, column)]);
  }

 private:
  static constexpr int kSide = 2 * kReach + 1;

  static constexpr size_t Index(int row, int column) {
    return static_cast<size_t>((row + kReach) * kSide + column + kReach);
  }

  std::array<int64_t, kSide * kSide> weights_{};
};

constexpr void SetNeighbours(PairModel& model) {
  size_t count_a = 0, count_b = 0;
  for (int row = -1; row <= 1; ++row)
    for (int column = -1; column <= 1; ++column) {
      if (row == 0 && column == 0) continue;
      const int of_b = CellsTo(row, column), of_a = model.a + of_b;
      if (of_b != model.a) model.neighbours_b[count_b++] = static_cast<int16_t>(of_b);
      if (of_a != model.b) model.neighbours_a[count_a++] = static_cast<int16_t>(of_a);
    }
}

constexpr PairModel MakeFineModel(const WeightGrid& weights, CellStep a) {
  PairModel model{};
  model.a = static_cast<int16_t>(CellsTo(a.row, a.column));
  SetNeighbours(model);
  for (int row = -WeightGrid::kReach - 1; row <= WeightGrid::kReach + 1; ++row)
    for (int column = -WeightGrid::kReach - 1; column <= WeightGrid::kReach + 1; ++column) {
      const int32_t amount = weights.At(row, column) - weights.At(row - a.row, column - a.column);
      if (amount <= 0) continue;
      const auto i = static_cast<size_t>(model.side++);
      model.cells_b[i] = static_cast<int16_t>(CellsTo(row, column));
      model.cells_a[i] = static_cast<int16_t>(CellsTo(a.row - row, a.column - column));
      model.amounts[i] = amount;
    }
  model.padded = static_cast<int16_t>((model.side + PairModel::kLanes - 1) / PairModel::kLanes * PairModel::kLanes);
  return model;
}

using FamilyModels = std::array<PairModel, kPairFamilies>;

template <int width>
constexpr FamilyModels MakeFineModels() {
  const WeightGrid weights(disc::kDisc<width>.View());
  FamilyModels models{};
  for (size_t family = 0; family < kPairFamilies; ++family)
    models[family] = MakeFineModel(weights, kEarlierPixel[family]);
  return models;
}

template <int width>
constexpr FamilyModels kFineModels = MakeFineModels<width>();

template <size_t... widths>
constexpr std::array<const FamilyModels*, kMaxWidth> FineTable(std::index_sequence<widths...>) {
  return {&kFineModels<static_cast<int>(widths) + 1>...};
}

constexpr std::array<const FamilyModels*, kMaxWidth> kFine = FineTable(std::make_index_sequence<kMaxWidth>());

}  // namespace

const PairModel& FinePairModel(int width, PairFamily family) {
  return (*kFine[static_cast<size_t>(width - 1)])[family];
}

}  // namespace kelvo
