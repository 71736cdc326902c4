#include "round/pair_model.h"

#include <cassert>
#include <utility>

#include "stages/move_sweep.h"
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

// Where the pixels of a pair lie, from its cell, and how far apart.
struct PairShape {
  CellStep a, b;
  int spacing;
};

constexpr PairShape kFineShapes[kPairFamilies] = {
    {{0, -1}, {0, 0}, 1}, {{-1, 0}, {0, 0}, 1}, {{-1, -1}, {0, 0}, 1}, {{-1, 1}, {0, 0}, 1}};
constexpr PairShape kCoarseShapes[kPairFamilies] = {
    {{0, -1}, {0, 1}, 2}, {{-1, 0}, {1, 0}, 2}, {{-1, -1}, {1, 1}, 2}, {{1, -1}, {-1, 1}, 2}};

constexpr int TentWeight(int row, int column) {
  const bool inside = row >= -1 && row <= 1 && column >= -1 && column <= 1;
  return inside ? (row == 0 ? 2 : 1) * (column == 0 ? 2 : 1) : 0;
}

constexpr int PointWeight(int row, int column) {
  return row == 0 && column == 0 ? 1 : 0;
}

constexpr int SpreadWeight(PairKind kind, int row, int column) {
  return kind == PairKind::kFine ? PointWeight(row, column) : TentWeight(row, column);
}

constexpr void SetNeighbours(PairModel& model, int spacing) {
  size_t count_a = 0, count_b = 0;
  for (int row = -spacing; row <= spacing; row += spacing)
    for (int column = -spacing; column <= spacing; column += spacing) {
      if (row == 0 && column == 0) continue;
      const int of_a = model.a + CellsTo(row, column), of_b = model.b + CellsTo(row, column);
      if (of_a != model.b) model.neighbours_a[count_a++] = static_cast<int16_t>(of_a);
      if (of_b != model.a) model.neighbours_b[count_b++] = static_cast<int16_t>(of_b);
    }
}

// The cells of both spreads; where they overlap they cancel in part or whole.
constexpr void SetSpread(PairModel& model, PairKind kind, const PairShape& shape) {
  for (int row = -2; row <= 2; ++row)
    for (int column = -2; column <= 2; ++column) {
      const int weight = SpreadWeight(kind, row - shape.b.row, column - shape.b.column) -
                         SpreadWeight(kind, row - shape.a.row, column - shape.a.column);
      if (weight == 0) continue;
      model.spread[static_cast<size_t>(model.spread_count++)] = {static_cast<int16_t>(CellsTo(row, column)),
                                                                 static_cast<int16_t>(weight)};
    }
}

// Change of the blurred estimate at a cell by one unit, 1/65536. A tent's middle is a whole unit, as in a fine pair.
constexpr int32_t Response(const WeightGrid& weights, PairKind kind, const PairShape& shape, int row, int column) {
  const auto difference = [&](int y, int x) {
    return weights.At(row - shape.b.row - y, column - shape.b.column - x) -
           weights.At(row - shape.a.row - y, column - shape.a.column - x);
  };
  if (kind == PairKind::kFine) return difference(0, 0);
  int32_t sum = 0;
  for (int y = -1; y <= 1; ++y)
    for (int x = -1; x <= 1; ++x) sum += TentWeight(y, x) * difference(y, x);
  return sum / 4;
}

// Adds a rising cell, and its falling twin.
constexpr void Add(PairModel& model, int cell, int32_t amount) {
  assert(amount <= kGreatestAmount);
  const auto i = static_cast<size_t>(model.side++);
  model.cells_b[i] = static_cast<int16_t>(cell);
  model.cells_a[i] = static_cast<int16_t>(model.a + model.b - cell);
  model.amounts[i] = amount;
  model.total_amount += amount;
}

// The rising side of the response, and the falling one by symmetry. Of a coarse pair's response the cells below a
// quarter of its largest are dropped: nearly half of the cells, which carry about a tenth of it.
constexpr void SetResponse(PairModel& model, PairKind kind, const PairShape& shape, const WeightGrid& weights) {
  constexpr int kReach = WeightGrid::kReach + 2;
  constexpr int kSide = 2 * kReach + 1;
  std::array<int32_t, kSide * kSide> responses{};
  int32_t largest = 0;
  size_t next = 0;
  for (int row = -kReach; row <= kReach; ++row)
    for (int column = -kReach; column <= kReach; ++column) {
      const int32_t amount = Response(weights, kind, shape, row, column);
      largest = amount > largest ? amount : largest;
      responses[next++] = amount;
    }
  next = 0;
  for (int row = -kReach; row <= kReach; ++row)
    for (int column = -kReach; column <= kReach; ++column) {
      const int32_t amount = responses[next++];
      if (amount <= 0 || (kind == PairKind::kCoarse && 4 * amount < largest)) continue;
      Add(model, CellsTo(row, column), amount);
    }
  model.padded = static_cast<int16_t>((model.side + PairModel::kLanes - 1) / PairModel::kLanes * PairModel::kLanes);
}

constexpr void SetExtent(PairModel& model) {
  int first = 0, last = 0;
  const auto add = [&](int cell) {
    const int column = StepOver(cell).column;
    first = column < first ? column : first;
    last = column > last ? column : last;
    model.reach = Farther(model.reach, cell);
  };
  for (const auto& cells : {model.neighbours_a, model.neighbours_b})
    for (const int16_t cell : cells) add(cell);
  for (const auto& cells : {model.cells_a, model.cells_b})
    for (size_t i = 0; i < static_cast<size_t>(model.side); ++i) add(cells[i]);
  for (size_t i = 0; i < static_cast<size_t>(model.spread_count); ++i) add(model.spread[i].cell);
  model.span = static_cast<int16_t>(last - first + 1);
}

constexpr PairModel MakeModel(PairKind kind, const WeightGrid& weights, int family) {
  const PairShape& shape = kind == PairKind::kFine ? kFineShapes[family] : kCoarseShapes[family];
  PairModel model{};
  model.a = static_cast<int16_t>(CellsTo(shape.a.row, shape.a.column));
  model.b = static_cast<int16_t>(CellsTo(shape.b.row, shape.b.column));
  SetNeighbours(model, shape.spacing);
  SetSpread(model, kind, shape);
  SetResponse(model, kind, shape, weights);
  SetExtent(model);
  model.spread_shift = kind == PairKind::kFine ? 0 : 2;
  // Intended: fine diagonal pairs, too, apply a quarter of their decoded step.
  model.apply_shift = kind == PairKind::kFine && family < kDiagonalPair ? 0 : 2;
  return model;
}

using FamilyModels = std::array<PairModel, kPairFamilies>;

template <PairKind kind, int width>
constexpr FamilyModels MakeModels() {
  const WeightGrid weights(disc::kDisc<width>.View());
  FamilyModels models{};
  for (int family = 0; family < kPairFamilies; ++family)
    models[static_cast<size_t>(family)] = MakeModel(kind, weights, family);
  return models;
}

template <PairKind kind, int width>
constexpr FamilyModels kModels = MakeModels<kind, width>();

constexpr int kFirstCoarse = 8;

template <PairKind kind, int first, size_t... i>
constexpr std::array<const FamilyModels*, sizeof...(i)> ModelTable(std::index_sequence<i...>) {
  return {&kModels<kind, static_cast<int>(i) + first>...};
}

constexpr auto kFine = ModelTable<PairKind::kFine, 1>(std::make_index_sequence<kMaxWidth>());
constexpr auto kCoarse =
    ModelTable<PairKind::kCoarse, kFirstCoarse>(std::make_index_sequence<kMaxWidth - kFirstCoarse + 1>());

}  // namespace

const PairModel& ModelOf(PairKind kind, int width, PairFamily family) {
  if (kind == PairKind::kFine) return (*kFine[static_cast<size_t>(width - 1)])[family];
  return (*kCoarse[static_cast<size_t>(width - kFirstCoarse)])[family];
}

}  // namespace kelvo
