// The search of plain::PairRow for the pairs of a row at once, one in each lane of a vector, where moves are undone.
#include "round/pair_lanes.h"

#include <algorithm>

#include "stages/misfit_lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

// The planes around neighbouring pairs of a row, kStride cells apart.
template <int kStride>
class RowCells {
 public:
  RowCells(const PairSweep& sweep, int cell) : sweep_(sweep), model_(*sweep.model), cell_(cell) {}

  Vector Estimate(int distance) const { return At(sweep_.estimate, distance); }
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
Vector LoadCodes(const int32_t* codes) {
  return kStride == 1 ? Load(codes) : LoadEven(codes);
}

template <int kStride>
void StoreCodes(int32_t* codes, Vector coded, int skip) {
  for (int i = skip; i < kLanes; ++i) codes[kStride * i] = static_cast<int32_t>(coded[i]);
}

// The last vector overlaps the one before it and keeps that one's codes.
template <int kStride>
void SearchRow(const PairSweep& sweep, const LaneCoder& coder, int first, int count, bool tame) {
  for (int done = 0; done < count; done += kLanes) {
    const int at = done <= count - kLanes ? done : count - kLanes, cell = first + kStride * at;
    const Vector codes = LoadCodes<kStride>(sweep.codes + cell), previous = LaneCoder::Previous(codes);
    PairLanes<RowCells<kStride>> trial(sweep, {sweep, cell}, coder.Units(previous), tame);
    LaneSearch search(trial, All(~0u), coder.FirstSign(previous), HalvesOnReversal(sweep));
    StoreCodes<kStride>(sweep.codes + cell, coder.Coded(codes, search.Run()), done - at);
  }
}

}  // namespace

void MovePairs(const PairMoves& moves) {
  if (moves.count == 0) return;
  if (!moves.sweeps[0].undo || moves.PairsInRow() < kLanes) return plain::MovePairs(moves);
  int reach = 0;
  for (int i = 0; i < moves.count; ++i) reach = std::max<int>(reach, moves.sweeps.data()[i].model->reach);
  const bool tame = FillMisfit(moves.sweeps[0], moves.window.Widened(reach));
  const LaneCoder coder(moves.sweeps.data()[0]);
  for (int i = 0; i < moves.count; ++i)
    for (int row = moves.window.first_row; row < moves.window.end_row; row += moves.stride) {
      const auto search = moves.stride == 1 ? SearchRow<1> : SearchRow<2>;
      search(moves.sweeps.data()[i], coder, CellsTo(row, moves.window.first_column), moves.PairsInRow(), tame);
    }
}

}  // namespace kelvo::KELVO_TARGET
