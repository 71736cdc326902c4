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

// The fine pass, on every cell of region final_margin: Stages of stages/restoration.h. Axis pairs move if ModelFlags
// has kAxisPairs, diagonal pairs if it has kDiagonalPairs. A pair's move shifts light between two pixels and so keeps
// the sum.
class FinePass {
 public:
  static constexpr int kCodePlanes[] = {kHorizontal, kVertical, kDiagonal, kAntiDiagonal};

  explicit FinePass(const RoundMember& member) : member_(member) {}

  void Blur(const Tile& tile) const { BlurEstimate(tile, member_); }
  void Move(const Tile& tile) const;

  // Intended: a diagonal pair moves by a quarter of its decoded step, rounded down.
  void Apply(const Tile& tile) const;

  int RefineCount(const TileParams& params) const { return RoundRefineCount(member_, params); }

 private:
  const RoundMember& member_;
};

}  // namespace kelvo

#endif  // KELVO_ROUND_ITERATION_H
