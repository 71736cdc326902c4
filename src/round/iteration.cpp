#include "round/iteration.h"

#include "round/pair_sweep.h"
#include "stages/point_operator.h"
#include "stages/routines.h"
#include "stages/schedule.h"
#include "stages/step_code.h"

namespace kelvo {
namespace {

// Whether a family of pairs moves in this run.
bool Moves(const TileParams& params, int family) {
  return (params.ModelFlags & (family < kDiagonalPair ? kAxisPairs : kDiagonalPairs)) != 0;
}

}  // namespace

void BlurEstimate(const Tile& tile, const RoundMember& member) {
  ApplyPointOperator(tile, DiscBlur(member.width), kEstimate, kBlurred, member.blur_margin);
}

void FindFloor(const Tile& tile, const RoundMember& member) {
  FindMinimum(tile, FloorCells(member.width), kBlurred, kFloor, member.final_margin + 1);
}

void PairPass::Move(const Tile& tile) const {
  PairMoves moves{{}, 0, WindowOf(Region(member_.final_margin)), Stride()};
  for (int family = 0; family < kPairFamilies; ++family) {
    if (!Moves(tile.params(), family)) continue;
    const PairModel& model = ModelOf(kind_, member_.width, static_cast<PairFamily>(family));
    moves.sweeps[static_cast<size_t>(moves.count++)] = MakePairSweep(tile, model, kPairPlanes[family]);
  }
  tile.routines().move_pairs(moves);
}

// Moves only add to the estimate, so their order is free.
void PairPass::Apply(const Tile& tile) const {
  const Region region(member_.final_margin);
  for (int family = 0; family < kPairFamilies; ++family) {
    if (!Moves(tile.params(), family)) continue;
    const PairModel& model = ModelOf(kind_, member_.width, static_cast<PairFamily>(family));
    for (int row = region.first; row < region.end; row += Stride())
      ApplyRow(tile, region, tile.Row(kPairPlanes[family], row), model, tile.Row(kEstimate, row));
  }
}

// A coarse row holds moves at every second cell only.
void PairPass::ApplyRow(const Tile& tile, const Region& region, const int32_t* codes, const PairModel& model,
                        int32_t* estimate) const {
  int32_t moves[kTileSize];
  tile.routines().decode_row(StepScaleOf(tile.params()), codes + region.first, moves, region.size());
  for (int i = 0; i < region.size(); ++i) moves[i] = i % Stride() == 0 ? moves[i] >> model.apply_shift : 0;
  for (size_t i = 0; i < static_cast<size_t>(model.spread_count); ++i)
    tile.routines().add_row(model.spread[i].weight, moves, estimate + region.first + model.spread[i].cell,
                            region.size());
}

}  // namespace kelvo
