// The stages of an iteration of round blur: blur, floor, move, apply.
#ifndef KELVO_ROUND_ITERATION_H
#define KELVO_ROUND_ITERATION_H

#include "round/family.h"
#include "round/pair_model.h"
#include "stages/tile.h"

namespace kelvo {

// The estimate blurred by the member's model.
//   reads  kEstimate, region blur_margin + reach;  writes  kBlurred, region blur_margin
void BlurEstimate(const Tile& tile, const RoundMember& member);

// The floor under every pixel: the least blurred value over the member's footprint. Once per run.
//   reads  kBlurred;  writes  kFloor, region final_margin + 1
void FindFloor(const Tile& tile, const RoundMember& member);

// A pass of one kind of pairs over region final_margin: Stages of stages/restoration.h. Fine pairs stand at every cell,
// coarse ones at every second row and column from the region's first on. Axis pairs move if ModelFlags has kAxisPairs,
// diagonal pairs if it has kDiagonalPairs. A move shifts light between two places and so keeps the sum.
class PairPass {
 public:
  static constexpr int kCodePlanes[] = {kHorizontal, kVertical, kDiagonal, kAntiDiagonal};

  PairPass(const RoundMember& member, PairKind kind) : member_(member), kind_(kind) {}

  void Blur(const Tile& tile) const { BlurEstimate(tile, member_); }
  void Move(const Tile& tile) const;
  void Apply(const Tile& tile) const;

 private:
  void ApplyRow(const Tile& tile, const Region& region, const int32_t* codes, const PairModel& model,
                int32_t* estimate) const;
  int Stride() const { return kind_ == PairKind::kFine ? 1 : 2; }

  const RoundMember& member_;
  PairKind kind_;
};

}  // namespace kelvo

#endif  // KELVO_ROUND_ITERATION_H
