// The searches of plain::MovePairs for several pairs at once, one in each lane of a vector: neighbours in a row where
// moves are undone, waves where they stay.
#include "round/pair_lanes.h"

#include <algorithm>

#include "round/pair_waves.h"
#include "stages/misfit_lanes.h"
#include "stages/search_turns.h"

namespace kelvo::KELVO_TARGET {
namespace {

// The planes around neighbouring pairs of a row, kStride cells apart.
template <int kStride>
class RowCells {
 public:
  static constexpr bool kChanging = false;

  RowCells(const PairSweep& sweep, int cell) : sweep_(sweep), model_(*sweep.model), cell_(cell) {}

  Vector A() const { return At(sweep_.estimate, model_.a); }
  Vector B() const { return At(sweep_.estimate, model_.b); }
  Vector NeighbourA(int i) const { return At(sweep_.estimate, model_.neighbours_a[static_cast<size_t>(i)]); }
  Vector NeighbourB(int i) const { return At(sweep_.estimate, model_.neighbours_b[static_cast<size_t>(i)]); }
  Vector Floor(int distance) const { return At(sweep_.floor, distance); }
  Vector Observed(int distance) const { return At(sweep_.observed, distance); }
  Vector Falling(int i) const { return At(sweep_.misfit, model_.cells_a[static_cast<size_t>(i)]); }
  Vector Rising(int i) const { return At(sweep_.misfit, model_.cells_b[static_cast<size_t>(i)]); }

 private:
  Vector At(const int32_t* plane, int distance) const {
    const int32_t* cells = plane + cell_ + distance;
    return kStride == 1 ? Load(cells) : LoadEven(cells);
  }

  const PairSweep& sweep_;
  const PairModel& model_;
  int cell_;
};

template <int kStride>
void SearchFamily(const PairMoves& moves, const PairSweep& sweep, const LaneCoder& coder, bool tame) {
  const PairAmounts amounts(*sweep.model);
  SearchVectors<PairLanes, kStride>(sweep, amounts, coder, moves.window,
                                    [&](PairLanes& trial, WindowVectors::Place place, Vector unit) {
                                      const RowCells<kStride> cells(sweep, CellsTo(place.row, place.column));
                                      trial.Read(cells, unit, tame);
                                      return true;
                                    });
}

// How far the pairs of all families reach, and over how many columns.
struct FamilyReach {
  explicit FamilyReach(const PairMoves& moves) {
    for (int i = 0; i < moves.count; ++i) {
      reach = std::max<int>(reach, moves.sweeps.data()[i].model->reach);
      span = std::max<int>(span, moves.sweeps.data()[i].model->span);
    }
  }
  int reach = 0, span = 0;
};

// Brings misfit and estimate into waves.
void Keep(const MoveSweep& sweep, const WaveLayout& layout, const WavePlanes& planes) {
  for (int row = 0; row < layout.rows(); ++row) {
    const int cell = layout.PlaneCell(row);
    const int32_t *blurred = sweep.blurred + cell, *observed = sweep.observed + cell, *estimate = sweep.estimate + cell;
    int32_t *to_misfit = planes.misfit + layout.Place(row, 0), *to_estimate = planes.estimate + layout.Place(row, 0);
    for (int column = 0; column < layout.columns(); ++column) {
      to_misfit[kLanes * column] = WrapSub(blurred[column], observed[column]);
      to_estimate[kLanes * column] = estimate[column];
    }
  }
}

void GiveBack(const MoveSweep& sweep, const WaveLayout& layout, const WavePlanes& planes) {
  for (int row = 0; row < layout.rows(); ++row) {
    const int cell = layout.PlaneCell(row), place = layout.Place(row, 0);
    for (int column = 0; column < layout.columns(); ++column) {
      const int32_t misfit = planes.misfit[place + kLanes * column];
      sweep.blurred[cell + column] = Signed(Bits(sweep.observed[cell + column]) + Bits(misfit));
      sweep.estimate[cell + column] = planes.estimate[place + kLanes * column];
    }
  }
}

// The sweep of one family in waves.
class WaveSweep {
 public:
  WaveSweep(const PairMoves& moves, const PairSweep& sweep, const WaveLayout& layout)
      : sweep_(sweep), model_(layout, *sweep.model), layout_(layout), coder_(sweep), amounts_(*sweep.model) {
    first_ = layout.margin();
    last_ = first_ + moves.stride * (moves.PairsInRow() - 1);
    first_row_ = layout.margin() / moves.stride;
    end_row_ = first_row_ + (moves.window.rows() + moves.stride - 1) / moves.stride;
  }

  void Run(const WavePlanes& planes) const {
    const int end = last_ + layout_.delay() * (end_row_ - 1);
    for (int wave = first_ + layout_.delay() * first_row_; wave <= end; wave += layout_.stride())
      Search(wave, {planes.misfit + kLanes * wave, planes.estimate + kLanes * wave});
  }

 private:
  // The planes' cells of the lanes' pairs; `active` where there is one.
  Vector CellsOf(int wave, Vector& active) const {
    Vector cells{};
    const int foremost = (wave - first_) / layout_.delay();
    for (int back = 0; back < kLanes; ++back) {
      const int row = foremost - back, column = wave - layout_.delay() * row;
      const bool in = row >= first_row_ && row < end_row_ && column <= last_;
      const int lane = row & (kLanes - 1);
      active[lane] = in ? ~0u : 0u;
      cells[lane] = Bits(layout_.PlaneCell(layout_.stride() * (in ? row : first_row_)) + (in ? column : first_));
    }
    return cells;
  }

  void Search(int wave, const WavePlanes& planes) const {
    Vector active{};
    const Vector at = CellsOf(wave, active), codes = Gather(sweep_.codes, at), previous = LaneCoder::Previous(codes);
    const WaveCells cells(sweep_, model_, planes, at);
    PairLanes trial(sweep_, amounts_);
    trial.Read(cells, coder_.Units(previous), false);
    LaneSearch search(trial);
    search.Begin(active, coder_.FirstSign(previous), HalvesOnReversal(sweep_));
    while (search.Step()) {
    }
    const Vector units = search.units(), coded = coder_.Coded(codes, units);
    if (Any(units)) cells.Finish(units, trial.spread());
    for (int i = 0; i < kLanes; ++i)
      if (active[i] != 0) sweep_.codes[at[i]] = Signed(coded[i]);
  }

  const PairSweep& sweep_;
  WaveModel model_;
  const WaveLayout& layout_;
  LaneCoder coder_;
  PairAmounts amounts_;
  int first_, last_, first_row_, end_row_;
};

// Four lanes do not earn what it costs to bring the cells into waves.
void MoveInWaves(const PairMoves& moves, const WaveLayout& layout) {
  if (kLanes == 4) return plain::MovePairs(moves);
#if defined(__AVX512F__)
  if (layout.IsSparse() || !layout.Fits()) return avx2::MovePairs(moves);
#endif
  if (!layout.Fits()) return plain::MovePairs(moves);
  const MoveSweep& shared = moves.sweeps[0];
  const WavePlanes planes{shared.misfit, shared.kept_estimate};
  Keep(shared, layout, planes);
  for (int i = 0; i < moves.count; ++i) WaveSweep(moves, moves.sweeps.data()[i], layout).Run(planes);
  GiveBack(shared, layout, planes);
}

}  // namespace

void MovePairs(const PairMoves& moves) {
  if (moves.count == 0) return;
  if (moves.PairsInRow() < kLanes) return plain::MovePairs(moves);
  const FamilyReach families(moves);
  if (!moves.sweeps[0].undo) return MoveInWaves(moves, WaveLayout(moves, families.reach, families.span));
  const bool tame = FillMisfit(moves.sweeps[0], moves.window.Widened(families.reach));
  const LaneCoder coder(moves.sweeps.data()[0]);
  const auto search = moves.stride == 1 ? SearchFamily<1> : SearchFamily<2>;
  for (int i = 0; i < moves.count; ++i) search(moves, moves.sweeps.data()[i], coder, tame);
}

}  // namespace kelvo::KELVO_TARGET
