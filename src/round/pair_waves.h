// The order of pairs whose moves stay, in waves of pairs that cannot see one another; included by the files that are
// compiled once per level.
//
// A pair reads and writes cells of `span` columns around it. Row k of pairs runs `delay` >= span columns behind row
// k - 1: so pairs that touch are searched in the order of plain::MovePairs, row by row, and a wave of kLanes rows holds
// none that touch.
//
//     row 0   . . . . . . . . . . . . 7          the wave T = 19, delay 6: lane k has row k, column T - 6 k - ...
//     row 1   . . . . . . 7
//     row 2   7
//
// Misfit and estimate are kept so that a wave lies in one vector: the cell of row k and column x is element k mod kLanes
// of vector x + delay k. Cells of rows further down lie in the same order, turned by as many lanes. Rows of coarse pairs
// stand two apart; the rows between them are kept behind the others in the same way.
#ifndef KELVO_ROUND_PAIR_WAVES_H
#define KELVO_ROUND_PAIR_WAVES_H

#include "round/pair_lanes.h"

namespace kelvo::KELVO_TARGET {

// of[turn]: lanes turn, turn + 1, .., kLanes - 1, 0, ..
struct LaneTurns {
  alignas(kVectorBytes) int32_t of[kLanes][kLanes];
};
constexpr LaneTurns MakeLaneTurns() {
  LaneTurns turns{};
  for (int turn = 0; turn < kLanes; ++turn)
    for (int lane = 0; lane < kLanes; ++lane) turns.of[turn][lane] = (lane + turn) & (kLanes - 1);
  return turns;
}
constexpr LaneTurns kLaneTurns = MakeLaneTurns();

// Lane (i + turn) mod kLanes into lane i.
inline Vector Turned(Vector v, int turn) {
  const Vector from = Load(kLaneTurns.of[turn]);
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(
      _mm512_permutexvar_epi32(reinterpret_cast<__m512i>(from), reinterpret_cast<__m512i>(v)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(
      _mm256_permutevar8x32_epi32(reinterpret_cast<__m256i>(v), reinterpret_cast<__m256i>(from)));
#else
  Vector turned{};
  for (int i = 0; i < kLanes; ++i) turned[i] = v[from[i]];
  return turned;
#endif
}

// Where cells are kept.
class WaveLayout {
 public:
  // Of the cells that the pairs reach, by models of `reach` and `span`.
  WaveLayout(const PairMoves& moves, int reach, int span) : stride_(moves.stride), margin_(reach + reach % 2) {
    first_row_ = moves.window.first_row - margin_;
    first_column_ = moves.window.first_column - margin_;
    rows_ = moves.window.rows() + 2 * margin_;
    columns_ = moves.window.columns() + 2 * margin_;
    delay_ = (columns_ + kLanes - 1) / kLanes;  // or two rows would meet in one element
    delay_ = delay_ < span ? span : delay_;
    delay_ += delay_ * (stride_ - 1) % 2;  // even for coarse pairs
    part_ = kLanes * (columns_ + delay_ * ((rows_ + stride_ - 1) / stride_ + 1));
  }

  bool Fits() const { return stride_ * part_ <= kPlaneCells; }

  // Whether fewer lanes would do better: rows so short that a third of the lanes waits for the next row.
  bool IsSparse() const { return 2 * kLanes * delay_ > 3 * columns_; }
  int stride() const { return stride_; }
  int delay() const { return delay_; }
  int margin() const { return margin_; }
  int rows() const { return rows_; }
  int columns() const { return columns_; }
  int PlaneCell(int row) const { return CellsTo(first_row_ + row, first_column_); }

  // Place of a cell, counted from the first row and column that are kept; the next column's is kLanes further.
  int Place(int row, int column) const {
    const int k = row / stride_;
    return row % stride_ * part_ + kLanes * (column + delay_ * k) + k % kLanes;
  }

  // From a vector of pairs to that of the cells at a distance from them, and how far those are turned.
  struct Step {
    int32_t offset, turn;
  };
  Step StepTo(int distance) const {
    const CellStep step = StepOver(distance);
    const int between = step.row & (stride_ - 1), k = (step.row - between) / stride_;
    return {between * part_ + kLanes * (step.column + delay_ * k), k & (kLanes - 1)};
  }

 private:
  int stride_, margin_, first_row_, first_column_, rows_, columns_, delay_, part_;
};

// A family's pairs as steps in the layout.
struct WaveModel {
  WaveModel(const WaveLayout& layout, const PairModel& model) : a(layout.StepTo(model.a)), b(layout.StepTo(model.b)) {
    for (size_t i = 0; i < PairModel::kNeighbours; ++i) {
      neighbours_a[i] = layout.StepTo(model.neighbours_a[i]);
      neighbours_b[i] = layout.StepTo(model.neighbours_b[i]);
    }
    for (size_t i = 0; i < static_cast<size_t>(model.side); ++i) {
      cells_a[i] = layout.StepTo(model.cells_a[i]);
      cells_b[i] = layout.StepTo(model.cells_b[i]);
    }
    for (size_t i = 0; i < static_cast<size_t>(model.spread_count); ++i)
      spread[i] = layout.StepTo(model.spread[i].cell);
  }

  WaveLayout::Step a, b;
  WaveLayout::Step neighbours_a[PairModel::kNeighbours], neighbours_b[PairModel::kNeighbours];
  WaveLayout::Step cells_a[PairModel::kMaxSide], cells_b[PairModel::kMaxSide];
  WaveLayout::Step spread[PairModel::kMaxSpread];
};

// The kept planes, at the pairs of one wave.
struct WavePlanes {
  int32_t *misfit, *estimate;

  static Vector Read(const int32_t* at, WaveLayout::Step step) { return Turned(Load(at + step.offset), step.turn); }
  static void Add(int32_t* at, WaveLayout::Step step, Vector change) {
    Store(at + step.offset, Load(at + step.offset) + Turned(change, -step.turn & (kLanes - 1)));
  }
};

// The pairs of a wave, as PairLanes reads them. `cells` are where they stand in the planes of the tile.
class WaveCells {
 public:
  static constexpr bool kChanging = true;  // pairs of earlier waves leave their moves

  WaveCells(const PairSweep& sweep, const WaveModel& model, const WavePlanes& planes, Vector cells)
      : sweep_(sweep), model_(model), planes_(planes), cells_(cells) {}

  Vector A() const { return WavePlanes::Read(planes_.estimate, model_.a); }
  Vector B() const { return WavePlanes::Read(planes_.estimate, model_.b); }
  Vector NeighbourA(int i) const { return WavePlanes::Read(planes_.estimate, model_.neighbours_a[i]); }
  Vector NeighbourB(int i) const { return WavePlanes::Read(planes_.estimate, model_.neighbours_b[i]); }
  Vector Falling(int i) const { return WavePlanes::Read(planes_.misfit, model_.cells_a[i]); }
  Vector Rising(int i) const { return WavePlanes::Read(planes_.misfit, model_.cells_b[i]); }
  Vector Floor(int distance) const { return Gather(sweep_.floor + distance, cells_); }
  Vector Observed(int distance) const { return Gather(sweep_.observed + distance, cells_); }

  // Leaves moves of `units` and what they `spread` in the planes.
  void Finish(Vector units, Vector spread) const {
    const PairModel& model = *sweep_.model;
    for (int i = 0; i < model.spread_count; ++i)
      WavePlanes::Add(planes_.estimate, model_.spread[i],
                      spread * static_cast<uint32_t>(model.spread.data()[i].weight));
    const Vector scaled = units << sweep_.scale_shift;
    for (int i = 0; i < model.side; ++i) {
      const Vector change = scaled * static_cast<uint32_t>(model.amounts.data()[i]);
      WavePlanes::Add(planes_.misfit, model_.cells_a[i], Vector{} - change);
      WavePlanes::Add(planes_.misfit, model_.cells_b[i], change);
    }
  }

 private:
  const PairSweep& sweep_;
  const WaveModel& model_;
  const WavePlanes& planes_;
  Vector cells_;
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_ROUND_PAIR_WAVES_H
